#pragma once

#include <cstddef>
#include <string>

#include <CLI/App.hpp>

#include "platform/ko/log.h"

namespace QV::app {

/** --log-level and --quiet: what a run of the program says on standard error. */
void addLogOptions(CLI::App& command);

/** A run of the program, which begins and ends with the log as it is by itself. */
class LogScope {
 public:
  LogScope();
  ~LogScope();
  LogScope(const LogScope&) = delete;
  LogScope& operator=(const LogScope&) = delete;
};

/** Returns what the options say, or else warning. */
ko::log::Level getLogLevel();
/** True if the options say it. */
bool isLogLevelAsked();
/** True if only what goes wrong is to be said. */
bool isQuiet();

/** Says a line on standard error, unless it is to be quiet. */
void note(const std::string& line);

/** Characters of a line of standard output: a terminal's; elsewhere what COLUMNS says, or 0. */
std::size_t getLineWidth();

}  // namespace QV::app
