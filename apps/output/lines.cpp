#include "apps/output/lines.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <sstream>
#include <string_view>
#include <sys/ioctl.h>
#include <unistd.h>

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

std::size_t getLineWidth() {
  winsize size{};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
  // NOLINTNEXTLINE(concurrency-mt-unsafe): nobody here changes the environment.
  const char* const text = std::getenv("COLUMNS");
  const std::string_view digits = text ? text : "";
  std::size_t width = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), width);
  return width;
}

}  // namespace QV::app
