#pragma once

#include "platform/api.h"

namespace QV::app {

/**
 * Runs the program itself: runProgram without anything of one's own. It finds this in the library
 * by kEntry, so that it need not load it for what it can say alone.
 */
QV_API int runQvsensors(int argc, const char* const* argv);

/** The linker's name of it. */
inline constexpr char kEntry[] = "_ZN2QV3app12runQvsensorsEiPKPKc";

}  // namespace QV::app
