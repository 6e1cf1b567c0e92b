#pragma once

#include "platform/api.h"

namespace QV::app {

/**
 * Runs the program: runProgram without own sensors. The executable finds it in the library by
 * kEntry, so that it can answer simple questions without loading the library.
 */
QV_API int runQvsensors(int argc, const char* const* argv);

/** The linker's name of it. */
inline constexpr char kEntry[] = "_ZN2QV3app12runQvsensorsEiPKPKc";

}  // namespace QV::app
