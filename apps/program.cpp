#include "apps/program.h"

#include <exception>
#include <iostream>
#include <string>

#include <CLI/CLI.hpp>

#include "apps/commands/commands.h"
#include "apps/interrupt.h"
#include "apps/usage_error.h"

namespace QV::app {
namespace {

constexpr int kFailure = 2;

int fail(const std::string& message) {
  std::string line = message;
  for (char& c : line) {
    if (c == '\n') c = ' ';
  }
  std::cerr << "qvsensors: " << line << '\n';
  return kFailure;
}

// The parser itself would only say that a command is missing.
void checkCommand(const CLI::App& program, int argc, const char* const* argv) {
  if (argc < 2 || argv[1][0] == '-' || program.get_subcommand_no_throw(argv[1])) return;
  std::string known;
  for (const CLI::App* command : program.get_subcommands({})) {
    known += (known.empty() ? "" : ", ") + command->get_name();
  }
  throw UsageError("no command \"" + std::string(argv[1]) + "\"; the commands are " + known);
}

int parseAndRun(CLI::App& program, int argc, const char* const* argv) {
  try {
    program.parse(argc, argv);
  } catch (const CLI::Success& success) {
    return program.exit(success);
  } catch (const CLI::ParseError& error) {
    return fail(std::string(error.what()) + " (see qvsensors --help)");
  }
  return 0;
}

}  // namespace

int runProgram(int argc, const char* const* argv) {
  CLI::App program("Reads a mobile robot's sensors: of simulated robots in a map of yours.",
                   "qvsensors");
  program.set_version_flag("--version", QV_VERSION);
  program.require_subcommand(1);
  program.set_help_all_flag("--help-all", "Help of every command");
  addListCommand(program);
  addReadCommand(program);
  addPlotCommand(program);
  addDriveCommand(program);
  catchInterrupts();
  try {
    checkCommand(program, argc, argv);
    return parseAndRun(program, argc, argv);
  } catch (const std::exception& exception) {
    return fail(exception.what());
  }
}

}  // namespace QV::app
