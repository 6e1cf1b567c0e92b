#include "apps/guides/command_table.h"

#include <algorithm>
#include <sstream>

#include <CLI/CLI.hpp>

namespace QV::app {
namespace {

std::vector<std::string> split(const std::string& text, char at) {
  std::istringstream stream(text);
  std::vector<std::string> parts;
  for (std::string part; std::getline(stream, part, at);) parts.push_back(part);
  return parts;
}

/** The name of a value is "FILE", or the choices: "porter|FILE". */
void readValue(OptionRow& row, const std::string& type) {
  row.choices = split(type, '|');
  if (row.choices.size() < 2 && type != "FILE") row.choices.clear();
  row.takesFile = std::erase(row.choices, "FILE") > 0;
  row.value = type;
}

OptionRow rowOf(const CLI::Option& option) {
  OptionRow row;
  for (const std::string& name : option.get_snames()) row.names.push_back("-" + name);
  for (const std::string& name : option.get_lnames()) row.names.push_back("--" + name);
  row.description = option.get_description();
  row.standard = option.get_default_str();
  if (option.get_items_expected_max() > 0) readValue(row, option.get_type_name());
  if (option.get_positional()) row.value = option.get_name(true);
  return row;
}

bool takesCommand(const CommandRow& command) {
  return std::ranges::any_of(command.arguments,
                             [](const OptionRow& argument) { return argument.value == "COMMAND"; });
}

/** Returns the names of commands as they follow `path`. */
std::vector<CommandRow> namesAfter(const std::vector<std::string>& path,
                                   const std::vector<CommandRow>& commands) {
  std::vector<CommandRow> names;
  for (const CommandRow& command : commands) {
    CommandRow name{.path = path, .description = command.description};
    name.path.push_back(command.path.back());
    name.commands = namesAfter(name.path, command.commands);
    names.push_back(std::move(name));
  }
  return names;
}

}  // namespace

CommandRow withNamedCommands(CommandRow program) {
  const std::vector<CommandRow> all = program.commands;
  for (CommandRow& command : program.commands)
    if (takesCommand(command)) command.commands = namesAfter(command.path, all);
  return program;
}

CommandRow tableOf(const CLI::App& app) {
  CommandRow row;
  for (const CLI::App* part = &app; part; part = part->get_parent())
    row.path.insert(row.path.begin(), part->get_name());
  row.description = app.get_description();
  row.footer = app.get_footer();
  for (const CLI::Option* option : app.get_options())
    (option->get_positional() ? row.arguments : row.options).push_back(rowOf(*option));
  for (const CLI::App* command : app.get_subcommands({})) row.commands.push_back(tableOf(*command));
  return row;
}

std::string joinedBy(const std::string& gap, const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : gap) + word;
  return text;
}

std::string pathOf(const CommandRow& command, const std::string& gap) {
  return joinedBy(gap, command.path);
}

}  // namespace QV::app
