#pragma once

namespace QV::app {

/**
 * qvsensors: 0 when all went well, 1 when a check finds a sensor that fails, 2 with one line on
 * standard error when it can't do what it was asked for, 128 and the signal's number after an
 * interruption.
 */
int runProgram(int argc, const char* const* argv);

}  // namespace QV::app
