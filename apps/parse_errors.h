#pragma once

#include <string>
#include <vector>

#include <CLI/App.hpp>

namespace QV::app {

/** The names of the commands of `app`, with commas. */
std::string commandsOf(const CLI::App& app);
/** Null if it has no such command. */
const CLI::App* findCommand(const CLI::App& app, const std::string& name);
/** The one that `names` lead to; UsageError, with those that there are, if they lead nowhere. */
const CLI::App& findCommand(const CLI::App& app, const std::vector<std::string>& names);
/**
 * Joins its name with those of the commands and the program that it is of: "qvsensors map info".
 */
std::string pathOf(const CLI::App& command);

/** The command of `program` that was asked for, of a command its own; `program` without one. */
const CLI::App& chosenCommand(const CLI::App& program);

/**
 * Describes in one line what is wrong with a command line. What no option or argument is comes
 * before anything else, as what is missing may be what it was meant to be.
 */
std::string describe(const CLI::App& program, const CLI::ParseError& error);

}  // namespace QV::app
