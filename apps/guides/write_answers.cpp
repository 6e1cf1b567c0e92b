// A program of the build: writes the source of getAnswers(), from the options of all commands.
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#include <CLI/CLI.hpp>

#include "apps/commands/commands.h"
#include "apps/guides/completion.h"
#include "apps/guides/manual_page.h"
#include "apps/parse_errors.h"

using namespace QV::app;

namespace {

std::string literal(const std::string& text) {
  return "R\"~~(" + text + ")~~\"";
}

class Answers {
 public:
  explicit Answers(const std::string& path) : source(path) {
    source << "#include \"apps/guides/answers.h\"\n\n"
              "std::vector<QV::app::Answer> QV::app::getAnswers() {\n  return {\n";
  }

  /** Each word follows a line break. */
  void add(const std::string& words, const std::string& text, bool isFolded = false) {
    source << '{' << literal(words.substr(1)) << ", " << literal(text) << ", " << isFolded
           << "},\n";
  }

  void addCommand(const CLI::App& command, const std::string& words) {
    const std::string help =
        command.get_formatter()->make_help(&command, pathOf(command), CLI::AppFormatMode::Normal);
    for (const std::string& asked : {"\nhelp" + words, words + "\n--help", words + "\n-h"})
      add(asked, help, true);
    std::ostringstream page;
    writeManualPage(page, tableOf(command));
    add("\nmanual" + words, page.str());
    for (const CLI::App* next : command.get_subcommands({}))
      addCommand(*next, words + '\n' + next->get_name());
  }

  void addCompletion(const CommandRow& program) {
    for (const Shell& shell : kShells) {
      std::ostringstream script;
      shell.write(script, program);
      add(std::string("\ncompletion\n") + shell.name, script.str());
    }
  }

  bool finish() {
    source << "  };\n}\n";
    source.close();
    return !!source;
  }

 private:
  std::ofstream source;
};

}  // namespace

int main(int argc, char** argv) {
  // Without a terminal no line is folded.
  if (argc != 2 || !std::freopen("/dev/null", "w", stdout)) return 2;
  int status = 0;
  const auto program = makeProgram({}, status);
  Answers answers(argv[1]);
  for (const char* const asked : {"\n--version", "\n-V"}) answers.add(asked, QV_VERSION "\n");
  answers.addCommand(*program, "");
  answers.addCompletion(withNamedCommands(tableOf(*program)));
  return answers.finish() ? 0 : 2;
}
