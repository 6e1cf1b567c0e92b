#pragma once

#include <string>

#include <CLI/App.hpp>

#include "platform/ko/log.h"

namespace QV::app {

/** The options --log-level and --quiet: the output on standard error. */
void addLogOptions(CLI::App& command);

/** A run of the program, which begins and ends with the log as it is by itself. */
class LogScope {
 public:
  LogScope();
  ~LogScope();
  LogScope(const LogScope&) = delete;
  LogScope& operator=(const LogScope&) = delete;
};

/** Returns the level of the options; default: warning. */
ko::log::Level getLogLevel();
/** True if --log-level was given. */
bool isLogLevelAsked();
/** True if only errors are to be printed. */
bool isQuiet();

/** Takes the program's name from its path; nothing for a null or empty one. */
void setProgramName(const char* path);
/** The name by which the program was called; default: qvsensors. */
const std::string& getProgramName();

/** Prints "name of the program: line" on standard error. */
void complain(const std::string& line);
/** The same, unless --quiet was given. */
void note(const std::string& line);

}  // namespace QV::app
