#pragma once

namespace QV::app {

/** qvsensors: 0 when all went well, 2 with one line on standard error when not. */
int runProgram(int argc, const char* const* argv);

}  // namespace QV::app
