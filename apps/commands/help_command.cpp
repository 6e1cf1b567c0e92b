#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "apps/commands/commands.h"
#include "apps/parse_errors.h"

namespace QV::app {
void addHelpCommand(CLI::App& program, const session::OpenOptions&, int&) {
  auto names = std::make_shared<std::vector<std::string>>();
  CLI::App* command = program.add_subcommand("help", "Say what a command does, and its options");
  command->add_option("COMMAND", *names, "its name (default: what commands there are)");
  command->callback([&program, names] {
    const CLI::App& asked = findCommand(program, *names);
    std::cout << asked.get_formatter()->make_help(&asked, pathOf(asked),
                                                  CLI::AppFormatMode::Normal);
  });
}

}  // namespace QV::app
