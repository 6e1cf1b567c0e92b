#pragma once

#include "platform/api.h"
#include "session/open.h"

namespace QV::app {

/**
 * Runs qvsensors, with all its commands, under the name that ends the path argv[0]. `robots` holds
 * the defaults of its options: creators of your own sensors, a world. Returns the exit status: 0
 * for success; 1 if a sensor fails a check or gives no record, a description has mistakes, a replay
 * differs, or a drive does not arrive; 2, with a line on standard error, if the program can't do
 * what was asked; 128 + signal number after an interruption. Call it once in a process.
 */
QV_API int runProgram(int argc, const char* const* argv, const session::OpenOptions& robots = {});

}  // namespace QV::app
