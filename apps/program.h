#pragma once

namespace QV::app {

/**
 * qvsensors: 0 when all went well, 2 with one line on standard error when not, 128 and the signal's
 * number after an interruption.
 */
int runProgram(int argc, const char* const* argv);

}  // namespace QV::app
