#pragma once

#include <CLI/App.hpp>

#include "session/open.h"

namespace QV::app {

/**
 * Adds one command of qvsensors: its options, its help, and what it does once they are parsed, with
 * `robots` to open robots by where nothing else is asked for. One that has a verdict to give sets
 * `status`, when it runs, to what the program is to end with.
 */
using AddCommand = void(CLI::App& program, const session::OpenOptions& robots, int& status);

}  // namespace QV::app
