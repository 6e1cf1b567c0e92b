#include "apps/output/notes.h"

#include <algorithm>
#include <iostream>
#include <iterator>
#include <optional>
#include <string_view>

#include <CLI/CLI.hpp>

#include "platform/ko/internal/log_console.h"

namespace QV::app {
namespace {

using ko::log::Level;

constexpr Level kLevels[] = {Level::silent,  Level::fatal, Level::error,
                             Level::warning, Level::info,  Level::verbose};

std::optional<Level> asked;
bool quiet = false;
std::string programName = "qvsensors";

std::string namesOfLevels() {
  std::string names;
  for (const Level level : kLevels) {
    names += level == kLevels[0] ? "" : level == *std::rbegin(kLevels) ? " or " : ", ";
    names += getName(level);
  }
  return names;
}

const Level* findLevel(const std::string& name) {
  const auto* found =
      std::ranges::find_if(kLevels, [&](Level level) { return name == getName(level); });
  return found == std::end(kLevels) ? nullptr : found;
}

std::string checkLevel(const std::string& name) {
  return findLevel(name) ? "" : namesOfLevels() + " expected, \"" + name + "\" given";
}

}  // namespace

void addLogOptions(CLI::App& command) {
  command
      .add_option_function<std::string>(
          "--log-level",
          [](const std::string& name) {
            asked = *findLevel(name);
            ko::log::setLevel(*asked);
            ko::log::detail::foldRepeats(*asked != Level::verbose);
          },
          "lowest log level that is printed to standard error (default: warning); only verbose "
          "prints each repetition of a warning or an error")
      ->type_name("silent|fatal|error|warning|info|verbose")
      ->check(checkLevel);
  command.add_flag_callback(
      "-q,--quiet",
      [] {
        quiet = true;
        if (!asked) ko::log::setLevel(Level::error);
      },
      "print only errors, and warnings that must not be missed, to standard error");
}

LogScope::LogScope() {
  asked.reset();
  quiet = false;
  ko::log::detail::foldRepeats(true);
}

LogScope::~LogScope() {
  ko::log::detail::foldRepeats(false);
  if (asked || quiet) ko::log::setLevel(Level::warning);
}

Level getLogLevel() {
  return asked.value_or(quiet ? Level::error : Level::warning);
}

bool isLogLevelAsked() {
  return asked.has_value();
}

bool isQuiet() {
  return quiet;
}

void setProgramName(const char* path) {
  const std::string_view whole = path ? path : "";
  const std::string_view last = whole.substr(whole.rfind('/') + 1);
  if (!last.empty()) programName = last;
}

const std::string& getProgramName() {
  return programName;
}

void complain(const std::string& line) {
  std::cerr << programName << ": " << line << '\n';
}

void note(const std::string& line) {
  if (!quiet) complain(line);
}

}  // namespace QV::app
