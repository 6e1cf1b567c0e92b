#pragma once

#include <string>
#include <vector>

#include <CLI/App.hpp>

namespace QV::app {

/** An option or an argument of a command, for manual pages and completion. */
struct OptionRow {
  /** "-o", "--output"; of an argument none. */
  std::vector<std::string> names = {};
  /** The word that stands for its value in texts, as FILE; of a flag empty, of an argument its
   * own name. */
  std::string value = {};
  /** The values that there are to choose from, if that is known. */
  std::vector<std::string> choices = {};
  /** True if its value may be a file. */
  bool takesFile = false;
  std::string description = {};
  /** The default value; empty if none is to be shown. */
  std::string standard = {};
};

/** A command of the program, or the program itself. */
struct CommandRow {
  /** "qvsensors map info", in parts. */
  std::vector<std::string> path = {};
  std::string description = {};
  std::string footer = {};
  std::vector<OptionRow> options = {};
  std::vector<OptionRow> arguments = {};
  std::vector<CommandRow> commands = {};
};

CommandRow tableOf(const CLI::App& app);

/** Adds the names of all commands, as commands of its own, to each command that takes a COMMAND. */
CommandRow withNamedCommands(CommandRow program);

/** Words with `gap` between them. */
std::string joinedBy(const std::string& gap, const std::vector<std::string>& words);
/** Joins its names by `gap`. */
std::string pathOf(const CommandRow& command, const std::string& gap);

}  // namespace QV::app
