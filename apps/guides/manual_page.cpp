#include "apps/guides/manual_page.h"

#include <ostream>
#include <sstream>

namespace QV::app {
namespace {

constexpr char kStatus[] =
    "0: success. 1: a sensor failed a check or gave no record, a description has mistakes, a "
    "replay "
    "differs, or a drive did not arrive. 2: the program can't do what was asked; standard error "
    "has one line. 128 + signal "
    "number: interrupted.";

/** Writes a text as roff takes it: no character of it is an order, and a hyphen is a hyphen. */
std::string plain(const std::string& text) {
  std::string result;
  for (const char c : text) {
    if (c == '-' || c == '\\') result += '\\';
    result += c == '\\' ? "e" : std::string(1, c);
  }
  return result.starts_with('.') || result.starts_with('\'') ? "\\&" + result : result;
}

void writeLines(std::ostream& out, const std::string& text) {
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) out << plain(line) << '\n';
}

void writeOption(std::ostream& out, const OptionRow& option) {
  std::string names;
  for (const std::string& name : option.names)
    names += (names.empty() ? "\\fB" : ", \\fB") + plain(name) + "\\fR";
  if (!option.value.empty())
    names += (names.empty() ? "\\fI" : " \\fI") + plain(option.value) + "\\fR";
  out << ".TP\n" << names << '\n' << plain(option.description);
  if (!option.standard.empty()) out << " (default: " << plain(option.standard) << ")";
  out << '\n';
}

void writeSynopsis(std::ostream& out, const CommandRow& command) {
  out << ".SH SYNOPSIS\n.B " << plain(pathOf(command, " ")) << "\n[\\fIOPTIONS\\fR]";
  for (const OptionRow& argument : command.arguments)
    out << " \\fI" << plain(argument.value) << "\\fR";
  out << (command.commands.empty() ? "" : " \\fICOMMAND\\fR ...") << '\n';
}

void writeCommands(std::ostream& out, const CommandRow& command) {
  if (command.commands.empty()) return;
  out << ".SH COMMANDS\n";
  for (const CommandRow& next : command.commands)
    out << ".TP\n\\fB" << plain(next.path.back()) << "\\fR\n" << plain(next.description) << '\n';
}

void writeOthers(std::ostream& out, const CommandRow& command) {
  std::string others;
  if (command.path.size() > 1) others = ".BR " + command.path.front() + " (1)\n";
  for (const CommandRow& next : command.commands)
    others += ".BR " + plain(pathOf(next, "-")) + " (1)\n";
  if (!others.empty()) out << ".SH SEE ALSO\n" << others;
}

}  // namespace

void writeManualPage(std::ostream& out, const CommandRow& command) {
  const std::string name = pathOf(command, "-");
  out << ".TH \"" << name << "\" 1 \"\" \"" << command.path.front() << " " QV_VERSION
      << "\" \"QV sensor library\"\n.SH NAME\n"
      << plain(name) << " \\- " << plain(command.description) << '\n';
  writeSynopsis(out, command);
  if (!command.footer.empty()) {
    out << ".SH DESCRIPTION\n";
    writeLines(out, command.footer);
  }
  writeCommands(out, command);
  out << ".SH OPTIONS\n";
  for (const OptionRow& argument : command.arguments) writeOption(out, argument);
  for (const OptionRow& option : command.options) writeOption(out, option);
  out << ".SH EXIT STATUS\n" << plain(kStatus) << '\n';
  writeOthers(out, command);
}

std::string nameOfPage(const CommandRow& command) {
  return pathOf(command, "-") + ".1";
}

}  // namespace QV::app
