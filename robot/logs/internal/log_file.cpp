#include "robot/logs/internal/log_file.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "platform/middleware/qv_value.h"
#include "platform/model/internal/number_text.h"
#include "robot/internal/file_bytes.h"

namespace QV::robot {
namespace {

constexpr std::size_t kMostBytes = std::size_t{256} << 20;
// More than any line has. A word takes eight times as much memory as in the file.
constexpr std::size_t kMostWords = 16'384;
constexpr std::size_t kShownOfLine = 20;
constexpr std::string_view kBlanks = " \t\r";

/** The words up to the first that is one too many. */
std::vector<std::string_view> wordsOf(std::string_view text) {
  std::vector<std::string_view> words;
  std::size_t begin = text.find_first_not_of(kBlanks);
  while (begin != std::string_view::npos && words.size() <= kMostWords) {
    const std::size_t end = std::min(text.find_first_of(kBlanks, begin), text.size());
    words.push_back(text.substr(begin, end - begin));
    begin = text.find_first_not_of(kBlanks, end);
  }
  return words;
}

}  // namespace

LogLine::LogLine(const std::string& path, int number, std::string_view text)
    : path(&path), number(number), words(wordsOf(text)) {}

void LogLine::expectSize(std::size_t size) const {
  if (words.size() == size) return;
  fail(std::to_string(size) + " words expected, " + std::to_string(words.size()) + " found");
}

double LogLine::toNumber(std::size_t index, const std::string& what, double low,
                         double high) const {
  const auto value = Model::toNumber(words[index]);
  if (value && *value >= low && *value <= high) return *value;
  failAt(index, what + " from " + QVValue(low).toText() + " to " + QVValue(high).toText());
}

int LogLine::toInteger(std::size_t index, const std::string& what, int low, int high) const {
  const auto value = Model::toInteger(words[index]);
  if (value && *value >= low && *value <= high) return *value;
  failAt(index, what + " from " + std::to_string(low) + " to " + std::to_string(high));
}

void LogLine::fail(const std::string& message) const {
  throw std::runtime_error(*path + ": line " + std::to_string(number) + ": " + message);
}

void LogLine::failAt(std::size_t index, const std::string& expected) const {
  fail(expected + " expected, \"" + std::string(words[index].substr(0, kShownOfLine)) + "\" found");
}

LogFile::LogFile(const std::string& path) : LogFile(path, readFile(path, kMostBytes)) {}

LogFile::LogFile(std::string path, std::string text)
    : path(std::move(path)), text(std::move(text)) {}

std::optional<LogLine> LogFile::next() {
  while (position < text.size()) {
    const std::size_t end = std::min(text.find('\n', position), text.size());
    const LogLine line(path, ++number, std::string_view(text).substr(position, end - position));
    position = end + 1;
    if (line.getSize() > kMostWords)
      line.fail("at most " + std::to_string(kMostWords) + " words expected, more found");
    if (line.getSize() > 0 && line[0].front() != '#') return line;
  }
  return std::nullopt;
}

}  // namespace QV::robot
