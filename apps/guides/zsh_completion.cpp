#include <ostream>

#include "apps/guides/completion.h"

namespace QV::app {
namespace {

/** Quotes a text within single quotes, where brackets and colons have a meaning of their own. */
std::string zshQuoted(const std::string& text) {
  std::string result;
  for (const char c : text) {
    if (c == '\'') {
      result += "'\\''";
    } else if (c == '[' || c == ']' || c == ':' || c == '\\') {
      result.append("\\").append(1, c);
    } else {
      result += c == '\n' ? ' ' : c;
    }
  }
  return result;
}

/** Returns ":name:choices". */
std::string zshValueOf(const OptionRow& option) {
  const std::string choices = joinedBy(" ", option.choices);
  std::string value = ":";
  value += zshQuoted(option.value) + ":";
  if (option.takesFile && !choices.empty())
    return value + "{_alternative \"words\\:word\\:(" + choices + ")\" \"files\\:file\\:_files\"}";
  if (option.takesFile) return value + "_files";
  return value + (choices.empty() ? " " : "(" + choices + ")");
}

void writeZshArguments(std::ostream& out, const CommandRow& command) {
  out << "  _arguments -s";
  for (const OptionRow& option : command.options) {
    for (const std::string& name : option.names) {
      out << " \\\n    '*" << name << '[' << zshQuoted(option.description) << ']'
          << (option.value.empty() ? "" : zshValueOf(option)) << '\'';
    }
  }
  for (const OptionRow& argument : command.arguments)
    out << " \\\n    '*" << zshValueOf(argument) << '\'';
  out << '\n';
}

void writeZshCommands(std::ostream& out, const CommandRow& command, const std::string& function) {
  out << "  local -a commands=(\n";
  for (const CommandRow& next : command.commands)
    out << "    '" << next.path.back() << ':' << zshQuoted(next.description) << "'\n";
  out << "  )\n  if (( CURRENT > 2 )); then\n    shift words\n    (( CURRENT-- ))\n"
      << "    (( $+functions[" << function << "_$words[1]] )) && " << function << "_$words[1]\n"
      << "    return\n  fi\n  _describe command commands\n";
}

void writeZshFunction(std::ostream& out, const CommandRow& command) {
  for (const CommandRow& next : command.commands) writeZshFunction(out, next);
  std::string function = "_";
  function += pathOf(command, "_");
  out << function << "() {\n";
  if (!command.commands.empty()) writeZshCommands(out, command, function);
  writeZshArguments(out, command);
  out << "}\n\n";
}

}  // namespace

void writeZshCompletion(std::ostream& out, const CommandRow& program) {
  const std::string name = program.path.front();
  out << "#compdef " << name << "\n# Completion of " << name << " for zsh.\n\n";
  writeZshFunction(out, program);
  out << "if [ \"$funcstack[1]\" = _" << name << " ]; then _" << name << " \"$@\"; else compdef _"
      << name << ' ' << name << "; fi\n";
}

}  // namespace QV::app
