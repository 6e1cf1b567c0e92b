#include <ostream>

#include "apps/guides/completion.h"

namespace QV::app {
namespace {

/** "read" and, within it, "map info". */
std::string bashPlaceOf(const CommandRow& command) {
  CommandRow within = command;
  within.path.erase(within.path.begin());
  return pathOf(within, " ");
}

void writeBashPlaces(std::ostream& out, const CommandRow& command) {
  for (const CommandRow& next : command.commands) {
    out << "      \"" << bashPlaceOf(next) << "\") at=$place ;;\n";
    writeBashPlaces(out, next);
  }
}

/** Writes the possible values of an option. */
void writeBashValues(std::ostream& out, const CommandRow& command) {
  for (const OptionRow& option : command.options) {
    if (option.value.empty()) continue;
    std::string names;
    for (const std::string& name : option.names)
      names += (names.empty() ? "\"" : " | \"") + bashPlaceOf(command) + " " + name + "\"";
    out << "    " << names << ") words=\"" << joinedBy(" ", option.choices)
        << "\" files=" << option.takesFile << " ;;\n";
  }
  for (const CommandRow& next : command.commands) writeBashValues(out, next);
}

void writeBashWords(std::ostream& out, const CommandRow& command) {
  std::vector<std::string> words;
  bool takesFile = false;
  for (const OptionRow& option : command.options)
    words.insert(words.end(), option.names.begin(), option.names.end());
  for (const OptionRow& argument : command.arguments) {
    words.insert(words.end(), argument.choices.begin(), argument.choices.end());
    takesFile = takesFile || argument.takesFile;
  }
  for (const CommandRow& next : command.commands) words.push_back(next.path.back());
  out << "        \"" << bashPlaceOf(command) << "\") words=\"" << joinedBy(" ", words)
      << "\" files=" << takesFile << " ;;\n";
  for (const CommandRow& next : command.commands) writeBashWords(out, next);
}

}  // namespace

void writeBashCompletion(std::ostream& out, const CommandRow& program) {
  const std::string name = program.path.front();
  out << "# Completion of " << name << " for bash.\n_" << name << "() {\n"
      << "  local current=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}\n"
      << "  local at= place words files i\n"
      << "  for ((i = 1; i < COMP_CWORD; i++)); do\n"
      << "    place=${at:+$at }${COMP_WORDS[i]}\n    case $place in\n";
  writeBashPlaces(out, program);
  out << "    esac\n  done\n  case \"$at $before\" in\n";
  writeBashValues(out, program);
  out << "    *)\n      case $at in\n";
  writeBashWords(out, program);
  out << "      esac\n      ;;\n  esac\n"
      << "  mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$current\")\n"
      << "  [ \"$files\" = 1 ] || return 0\n"
      << "  compopt -o filenames 2>/dev/null\n"
      << "  mapfile -t -O ${#COMPREPLY[@]} COMPREPLY < <(compgen -f -- \"$current\")\n"
      << "}\ncomplete -F _" << name << ' ' << name << '\n';
}

}  // namespace QV::app
