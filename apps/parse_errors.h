#pragma once

#include <string>
#include <vector>

#include <CLI/App.hpp>

namespace QV::app {

/** The names of the commands of `app`, with commas. */
std::string commandsOf(const CLI::App& app);
/** Null if it has no such command. */
const CLI::App* findCommand(const CLI::App& app, const std::string& name);
/** Returns the command that `names` lead to. Throws UsageError with the known commands if there is
 * none. */
const CLI::App& findCommand(const CLI::App& app, const std::vector<std::string>& names);
/**
 * Joins its name with those of the commands and the program that it is of: "qvsensors map info".
 */
std::string pathOf(const CLI::App& command);

/** The command of `program` that was asked for, of a command its own; `program` without one. */
const CLI::App& chosenCommand(const CLI::App& program);

/**
 * Describes an error of the command line in one line. Unknown options and arguments come before
 * missing ones, because a misspelt option may be the missing one.
 */
std::string describe(const CLI::App& program, const CLI::ParseError& error);

}  // namespace QV::app
