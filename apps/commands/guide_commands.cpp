#include <cerrno>
#include <fstream>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "apps/choices.h"
#include "apps/commands/add_options.h"
#include "apps/commands/commands.h"
#include "apps/guides/completion.h"
#include "apps/guides/manual_page.h"
#include "apps/output/notes.h"
#include "apps/parse_errors.h"
#include "platform/ko/internal/write_error.h"

namespace QV::app {
namespace {

/** Returns the text that `write` writes to a stream. */
template <typename Write>
void writeFile(const std::string& path, const Write& write) {
  errno = 0;
  std::ofstream file(path);
  write(file);
  file.close();
  if (!file) throw std::runtime_error(ko::detail::cannotWrite(path));
}

void writeScript(const CommandRow& program, const std::string& shellName, const std::string& path) {
  for (const Shell& shell : kShells) {
    if (shellName != shell.name) continue;
    if (path == "-") return shell.write(std::cout, program);
    writeFile(path, [&](std::ostream& out) { shell.write(out, program); });
  }
}

void writePages(const std::string& folder, const CommandRow& command) {
  writeFile(folder + "/" + nameOfPage(command),
            [&](std::ostream& out) { writeManualPage(out, command); });
  for (const CommandRow& next : command.commands) writePages(folder, next);
}

}  // namespace

void addCompletionCommand(CLI::App& program, const session::OpenOptions&, int&) {
  auto name = std::make_shared<std::string>();
  CLI::App* command =
      program.add_subcommand("completion", "Write a script by which a shell completes commands");
  command->footer(
      "The Debian package puts these scripts where shells look for them. Without it:\n"
      "source <(" +
      getProgramName() + " completion bash).");
  takesOneOf(*command->add_option("SHELL", *name, "bash, zsh or fish"), {"bash", "zsh", "fish"})
      .required();
  auto path = std::make_shared<std::string>("-");
  command->add_option("-o,--output", *path, "file for it; - is standard output")
      ->type_name("FILE")
      ->check(namesAFile)
      ->capture_default_str();
  command->callback(
      [&program, name, path] { writeScript(withNamedCommands(tableOf(program)), *name, *path); });
}

void addManualCommand(CLI::App& program, const session::OpenOptions&, int&) {
  auto names = std::make_shared<std::vector<std::string>>();
  auto folder = std::make_shared<std::string>();
  CLI::App* command =
      program.add_subcommand("manual", "Print a manual page; view it with man -l -");
  command->add_option("COMMAND", *names, "its name (default: the program's own page)");
  command->add_option("-o,--output", *folder, "folder for the pages of all commands")
      ->type_name("FILE");
  command->callback([&program, names, folder] {
    if (!folder->empty()) return writePages(*folder, tableOf(program));
    writeManualPage(std::cout, tableOf(findCommand(program, *names)));
  });
}

}  // namespace QV::app
