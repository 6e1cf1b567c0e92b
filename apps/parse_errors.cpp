#include "apps/parse_errors.h"

#include <algorithm>
#include <numeric>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>

#include "session/usage_error.h"

namespace QV::app {
namespace {

/** How many letters have to be put in, taken away or changed. */
std::size_t distanceOf(const std::string& from, const std::string& to) {
  std::vector<std::size_t> row(to.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < from.size(); ++i) {
    std::size_t before = std::exchange(row[0], i + 1);
    for (std::size_t k = 0; k < to.size(); ++k) {
      const std::size_t changed = before + (from[i] == to[k] ? 0 : 1);
      before = row[k + 1];
      row[k + 1] = std::min({changed, before + 1, row[k] + 1});
    }
  }
  return row.back();
}

/** The option that is at most two slips away; empty if none is. */
std::string findSimilar(const CLI::App& command, const std::string& given) {
  std::string best;
  std::size_t least = 3;
  for (const CLI::Option* option : command.get_options()) {
    for (const std::string& name : option->get_lnames()) {
      const std::size_t distance = distanceOf(given, "--" + name);
      if (distance >= least) continue;
      least = distance;
      best = "--" + name;
    }
  }
  return best;
}

std::string describeUnknown(const CLI::App& command, const std::vector<std::string>& unknown) {
  const auto option = std::ranges::find_if(
      unknown, [](const std::string& word) { return word.size() > 1 && word[0] == '-'; });
  if (option == unknown.end()) return "\"" + unknown.front() + "\": not expected";
  const std::string name = option->substr(0, option->find('='));
  const std::string similar = findSimilar(command, name);
  return "no option " + name + (similar.empty() ? "" : "; did you mean " + similar + "?");
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
  if (unknown.empty() && error.get_name() == "RequiredError" && !command.get_subcommands({}).empty())
    text = "a command expected; the commands are " + commandsOf(command);
  if (unknown.empty() && error.get_name() == "ConversionError") text += ", a number expected";
  return text + " (see " + pathOf(command) + " --help)";
}

}  // namespace QV::app
