#include "apps/help_formatter.h"

#include <algorithm>
#include <sstream>

#include "apps/output/notes.h"

namespace QV::app {
namespace {

constexpr std::size_t kTextColumn = 30;

// Options and commands begin with two blanks; their texts stand in one column.
std::size_t hangOf(const std::string& line) {
  if (line.starts_with("- ")) return 2;
  return line.starts_with("  ") ? kTextColumn : 0;
}

void foldLine(std::string line, std::size_t width, std::ostream& out) {
  const std::size_t hang = hangOf(line);
  while (line.size() > width) {
    std::size_t end = line.rfind(' ', width);
    if (end == std::string::npos || line.find_first_not_of(' ') >= end || end <= hang) break;
    out << line.substr(0, end) << '\n';
    const std::size_t next = std::min(line.find_first_not_of(' ', end), line.size());
    line = std::string(hang, ' ') + line.substr(next);
  }
  out << line << '\n';
}

}  // namespace

std::string foldLines(const std::string& text, std::size_t width) {
  if (width <= kTextColumn) return text;
  std::istringstream lines(text);
  std::ostringstream out;
  for (std::string line; std::getline(lines, line);) foldLine(std::move(line), width, out);
  return out.str();
}

std::string HelpFormatter::make_help(const CLI::App* app, std::string name,
                                     CLI::AppFormatMode mode) const {
  return foldLines(CLI::Formatter::make_help(app, std::move(name), mode), getLineWidth());
}

std::string HelpFormatter::make_option_opts(const CLI::Option* option) const {
  std::string text;
  if (option->get_type_size() == 0) return text;
  if (!option->get_type_name().empty()) text += ' ' + get_label(option->get_type_name());
  if (!option->get_default_str().empty()) text += '=' + option->get_default_str();
  if (option->get_expected_max() == CLI::detail::expected_max_vector_size) text += " ...";
  if (option->get_required()) text += " (required)";
  return text;
}

}  // namespace QV::app
