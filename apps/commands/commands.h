#pragma once

#include <memory>

#include <CLI/App.hpp>

#include "session/open.h"

namespace QV::app {

/**
 * Adds a command of qvsensors: its options, its help, and its action after parsing. `robots` holds
 * the defaults for opening robots. A command with a verdict sets `status` to the program's exit
 * status.
 */
using AddCommand = void(CLI::App& program, const session::OpenOptions& robots, int& status);

/** Makes the parser of the program with all its commands. `status` must outlive it. */
std::unique_ptr<CLI::App> makeProgram(const session::OpenOptions& robots, int& status);

}  // namespace QV::app
