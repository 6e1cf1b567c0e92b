#pragma once

#include "platform/api.h"
#include "session/open.h"

namespace QV::app {

/**
 * qvsensors, with all its commands. `robots` holds what its options leave open: the makers of one's
 * own sensors, a world. Gives 0 when all went well, 1 when a sensor fails a check or gives nothing
 * that was asked for, or a drive does not arrive, 2 with one line on standard error when it can't
 * do what it was asked for, 128 and the signal's number after an interruption. Once in a process.
 */
QV_API int runProgram(int argc, const char* const* argv, const session::OpenOptions& robots = {});

}  // namespace QV::app
