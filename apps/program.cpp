#include "apps/program.h"

#include <cerrno>
#include <exception>
#include <iostream>
#include <memory>
#include <string>

#include <CLI/CLI.hpp>

#include "apps/commands/commands.h"
#include "apps/entry.h"
#include "apps/help_formatter.h"
#include "apps/interrupt.h"
#include "apps/output/notes.h"
#include "apps/parse_errors.h"
#include "platform/ko/internal/write_error.h"
#include "platform/ko/log.h"
#include "session/usage_error.h"

namespace QV::app {

// A new command is a file, and its name here.
#define QV_COMMANDS(row)                                                                          \
  row(List) row(Read) row(Plot) row(Drive) row(Check) row(Watch) row(Serve) row(Replay) row(Info) \
      row(Recover) row(Ros2) row(Stream) row(Map) row(Help) row(Completion) row(Manual)
#define QV_DECLARE(name) AddCommand add##name##Command;
#define QV_LIST(name) add##name##Command,

QV_COMMANDS(QV_DECLARE)

namespace {

constexpr AddCommand* kCommands[] = {QV_COMMANDS(QV_LIST)};

constexpr int kFailure = 2;

int fail(const std::string& message) {
  // The message may quote a file: nothing in it may act on a terminal.
  complain(ko::log::onOneLine(message));
  return kFailure;
}

// The parser's own message would not list the commands.
void checkCommand(const CLI::App& program, int argc, const char* const* argv) {
  if (argc < 2)
    throw session::UsageError("a command expected; the commands are " + commandsOf(program));
  if (argv[1][0] == '-' || findCommand(program, argv[1])) return;
  throw session::UsageError("no command \"" + std::string(argv[1]) + "\"; the commands are " +
                            commandsOf(program));
}

void addLogOptionsToAll(CLI::App& app) {
  for (CLI::App* const command : app.get_subcommands({})) {
    addLogOptions(*command);
    addLogOptionsToAll(*command);
  }
}

/** Sets errno if not. */
bool isOutputWhole() {
  const bool wasWhole = !!std::cout;
  // A second flush fails again and sets errno, which gives the reason.
  std::cout.clear();
  errno = 0;
  std::cout.flush();
  return wasWhole && std::cout;
}

// `status` is set by the command that runs.
int parseAndRun(CLI::App& program, const int& status, int argc, const char* const* argv) {
  try {
    program.parse(argc, argv);
  } catch (const CLI::Success& success) {
    return program.exit(success);
  } catch (const CLI::ParseError& error) {
    return fail(describe(program, error));
  }
  if (!isOutputWhole()) return fail(ko::detail::cannotWrite("standard output"));
  // A failure outranks an interruption: the user must know of an incomplete file.
  return isInterrupted() && status != kFailure ? getInterruptStatus() : status;
}

}  // namespace

std::unique_ptr<CLI::App> makeProgram(const session::OpenOptions& robots, int& status) {
  auto program = std::make_unique<CLI::App>(
      "Reads the sensors of a mobile robot: simulated, virtual, recorded, or on a ROS 2 graph.",
      getProgramName());
  program->formatter(std::make_shared<HelpFormatter>());
  program->set_version_flag("-V,--version", QV_VERSION, "Print the version and exit");
  program->require_subcommand(1);
  program->set_help_all_flag("--help-all", "Help of every command");
  for (AddCommand* const add : kCommands) add(*program, robots, status);
  addLogOptions(*program);
  addLogOptionsToAll(*program);
  return program;
}

int runProgram(int argc, const char* const* argv, const session::OpenOptions& robots) {
  setProgramName(argc > 0 ? argv[0] : nullptr);
  int status = 0;
  const auto program = makeProgram(robots, status);
  const LogScope log;
  forgetInterrupts();
  try {
    checkCommand(*program, argc, argv);
    return parseAndRun(*program, status, argc, argv);
  } catch (const std::exception& exception) {
    return fail(exception.what());
  }
}

int runQvsensors(int argc, const char* const* argv) {
  return runProgram(argc, argv);
}

}  // namespace QV::app
