#include "apps/parse_errors.h"

#include <algorithm>
#include <vector>

#include <CLI/CLI.hpp>

#include "platform/model/internal/nearest_word.h"
#include "session/usage_error.h"

namespace QV::app {
namespace {

std::vector<std::string> optionsOf(const CLI::App& command) {
  std::vector<std::string> names;
  for (const CLI::Option* option : command.get_options())
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
  return names;
}

std::string describeUnknown(const CLI::App& command, const std::vector<std::string>& unknown) {
  const auto option = std::ranges::find_if(
      unknown, [](const std::string& word) { return word.size() > 1 && word[0] == '-'; });
  if (option == unknown.end()) return "\"" + unknown.front() + "\": not expected";
  const std::string name = option->substr(0, option->find('='));
  const auto known = optionsOf(command);
  const std::string* const similar = Model::detail::findNearest(name, known);
  if (similar && *similar == name) return name + ": put options after the command";
  return "no option " + name + (similar ? "; did you mean " + *similar + "?" : "");
}

/** Describes "--noise: 1 required FLOAT missing". */
std::string describeMissing(const std::string& text) {
  const std::string before = ": 1 required ";
  const auto begin = text.find(before);
  const auto end = text.rfind(" missing");
  if (begin == std::string::npos || end == std::string::npos) return text;
  const auto value = begin + before.size();
  return text.substr(0, begin) + ": a value expected (" + text.substr(value, end - value) + ")";
}

}  // namespace

std::string commandsOf(const CLI::App& app) {
  std::string names;
  for (const CLI::App* command : app.get_subcommands({}))
    names += (names.empty() ? "" : ", ") + command->get_name();
  return names;
}

const CLI::App* findCommand(const CLI::App& app, const std::string& name) {
  for (const CLI::App* command : app.get_subcommands({}))
    if (command->get_name() == name) return command;
  return nullptr;
}

const CLI::App& findCommand(const CLI::App& app, const std::vector<std::string>& names) {
  const CLI::App* command = &app;
  for (const std::string& name : names) {
    const CLI::App* const next = findCommand(*command, name);
    if (!next && command->get_subcommands({}).empty())
      throw session::UsageError(pathOf(*command) + " has no commands, \"" + name + "\" given");
    if (!next)
      throw session::UsageError("no command \"" + name + "\"; the commands are " +
                                commandsOf(*command));
    command = next;
  }
  return *command;
}

std::string pathOf(const CLI::App& command) {
  const CLI::App* const above = command.get_parent();
  return above ? pathOf(*above) + " " + command.get_name() : command.get_name();
}

const CLI::App& chosenCommand(const CLI::App& program) {
  const auto chosen = program.get_subcommands();
  return chosen.empty() ? program : chosenCommand(*chosen.front());
}

std::string describe(const CLI::App& program, const CLI::ParseError& error) {
  const CLI::App& command = chosenCommand(program);
  const auto unknown = program.remaining(true);
  std::string text = unknown.empty() ? error.what() : describeUnknown(command, unknown);
  if (unknown.empty() && error.get_name() == "RequiredError" &&
      !command.get_subcommands({}).empty())
    text = "a command expected; the commands are " + commandsOf(command);
  if (unknown.empty() && error.get_name() == "ConversionError") text += ", a number expected";
  if (unknown.empty() && error.get_name() == "ArgumentMismatch") text = describeMissing(text);
  return text + " (see " + pathOf(command) + " --help)";
}

}  // namespace QV::app
