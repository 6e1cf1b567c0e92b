#include "apps/program.h"

#include <exception>
#include <iostream>
#include <string>

#include <CLI/CLI.hpp>

#include "apps/commands/commands.h"
#include "apps/interrupt.h"
#include "platform/ko/log.h"
#include "session/usage_error.h"

namespace QV::app {

// A new command is a file, and its name here.
AddCommand addListCommand, addReadCommand, addPlotCommand, addDriveCommand, addCheckCommand,
    addWatchCommand, addServeCommand, addReplayCommand, addInfoCommand, addRecoverCommand,
    addRos2Command;

namespace {

constexpr AddCommand* kCommands[] = {addListCommand,    addReadCommand,   addPlotCommand,
                                     addDriveCommand,   addCheckCommand,  addWatchCommand,
                                     addServeCommand,   addReplayCommand, addInfoCommand,
                                     addRecoverCommand, addRos2Command};

constexpr int kFailure = 2;

int fail(const std::string& message) {
  // It may quote a file: nothing in it may act on a terminal.
  std::cerr << "qvsensors: " << ko::log::onOneLine(message) << '\n';
  return kFailure;
}

std::string commandsOf(const CLI::App& program) {
  std::string names;
  for (const CLI::App* command : program.get_subcommands({})) {
    names += (names.empty() ? "" : ", ") + command->get_name();
  }
  return names;
}

// The parser itself would not say what there is.
void checkCommand(const CLI::App& program, int argc, const char* const* argv) {
  if (argc < 2)
    throw session::UsageError("a command expected; the commands are " + commandsOf(program));
  if (argv[1][0] == '-') return;
  for (const CLI::App* command : program.get_subcommands({})) {
    if (command->get_name() == argv[1]) return;
  }
  throw session::UsageError("no command \"" + std::string(argv[1]) + "\"; the commands are " +
                            commandsOf(program));
}

std::string describe(const CLI::App& program, const CLI::ParseError& error) {
  std::string text = error.what();
  if (error.get_name() == "ConversionError") text += ", a number expected";
  const auto chosen = program.get_subcommands();
  return text + " (see qvsensors " + (chosen.empty() ? "" : chosen.front()->get_name() + " ") +
         "--help)";
}

// `status` is what the command that runs sets it to.
int parseAndRun(CLI::App& program, const int& status, int argc, const char* const* argv) {
  try {
    program.parse(argc, argv);
  } catch (const CLI::Success& success) {
    return program.exit(success);
  } catch (const CLI::ParseError& error) {
    return fail(describe(program, error));
  }
  std::cout.flush();
  if (!std::cout) return fail("standard output: can't be written");
  // Whoever was interrupted on purpose still wants to know of a file that is not whole.
  return isInterrupted() && status != kFailure ? getInterruptStatus() : status;
}

}  // namespace

int runProgram(int argc, const char* const* argv, const session::OpenOptions& robots) {
  CLI::App program(
      "Reads a mobile robot's sensors: of simulated and virtual robots in a map of yours.",
      "qvsensors");
  program.set_version_flag("--version", QV_VERSION);
  program.require_subcommand(1);
  program.set_help_all_flag("--help-all", "Help of every command");
  int status = 0;
  for (AddCommand* const add : kCommands) add(program, robots, status);
  catchInterrupts();
  try {
    checkCommand(program, argc, argv);
    return parseAndRun(program, status, argc, argv);
  } catch (const std::exception& exception) {
    return fail(exception.what());
  }
}

}  // namespace QV::app
