#include <ostream>

#include "apps/guides/completion.h"

namespace QV::app {
namespace {

std::string fishQuoted(const std::string& text) {
  std::string result = "'";
  for (const char c : text) {
    if (c == '\'' || c == '\\') result += '\\';
    result += c == '\n' ? ' ' : c;
  }
  return result + "'";
}

/** Returns the completion of a value: words, files, both, or none. */
std::string fishValueOf(const OptionRow& option) {
  std::string text = option.takesFile ? " -r -F" : " -x";
  if (!option.choices.empty()) text += " -a " + fishQuoted(joinedBy(" ", option.choices));
  return text;
}

void writeFishCommand(std::ostream& out, const CommandRow& command) {
  const std::string start = "complete -c " + command.path.front() + " -n '__" +
                            command.path.front() + "_at " + pathOf(command, " ") + "'";
  for (const OptionRow& option : command.options) {
    out << start;
    for (const std::string& name : option.names)
      out << (name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1));
    out << (option.value.empty() ? "" : fishValueOf(option)) << " -d "
        << fishQuoted(option.description) << '\n';
  }
  for (const OptionRow& argument : command.arguments) {
    if (argument.takesFile) out << start << " -F\n";
    if (!argument.choices.empty())
      out << start << " -a " << fishQuoted(joinedBy(" ", argument.choices)) << '\n';
  }
  for (const CommandRow& next : command.commands) {
    out << start << " -a " << next.path.back() << " -d " << fishQuoted(next.description) << '\n';
    writeFishCommand(out, next);
  }
}

void writeFishPlaces(std::ostream& out, const CommandRow& command) {
  for (const CommandRow& next : command.commands) {
    out << "      case " << fishQuoted(pathOf(next, " ")) << "\n        set at \"$at $word\"\n";
    writeFishPlaces(out, next);
  }
}

}  // namespace

void writeFishCompletion(std::ostream& out, const CommandRow& program) {
  const std::string name = program.path.front();
  out << "# Completion of " << name << " for fish.\n\n"
      << "# Whether the words so far name just this command.\n"
      << "function __" << name << "_at\n  set -l at " << name << "\n"
      << "  set -l words (commandline -opc)\n"
      << "  for word in $words[2..]\n    switch \"$at $word\"\n";
  writeFishPlaces(out, program);
  out << "    end\n  end\n  test \"$at\" = \"$argv\"\nend\n\ncomplete -c " << name << " -f\n";
  writeFishCommand(out, program);
}

}  // namespace QV::app
