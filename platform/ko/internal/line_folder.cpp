#include "platform/ko/internal/line_folder.h"

#include <cstdlib>

namespace ko::log::detail {
namespace {

constexpr Duration kTogether{10'000'000'000};
constexpr std::size_t kMostSorts = 200;

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

bool isOfWord(char c) {
  return isDigit(c) || c == '_' || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

/** True for the 1 of Laser1, scan_2's and sonar-3's digit: they name something. */
bool isOfName(const std::string& line, std::size_t at) {
  const char before = at > 0 ? line[at - 1] : ' ';
  if (before == '-') return at > 1 && isOfWord(line[at - 2]);
  return isOfWord(before) || before == '.' || before == '/';
}

std::size_t endOfDigits(const std::string& line, std::size_t at) {
  while (at < line.size() && isDigit(line[at])) ++at;
  return at;
}

/** Returns the line without its figures. */
std::string sortOf(const std::string& line) {
  std::string sort;
  for (std::size_t at = 0; at < line.size();) {
    if (!isDigit(line[at]) || isOfName(line, at)) {
      sort += line[at++];
      continue;
    }
    sort += '#';
    at = endOfDigits(line, at);
    const bool hasMore = at + 1 < line.size() && line[at] == '.' && isDigit(line[at + 1]);
    if (hasMore) at = endOfDigits(line, at + 1);
  }
  return sort;
}

}  // namespace

std::vector<FoldedLine> LineFolder::fold(Level level, const std::string& line,
                                         Clock::time_point now) {
  if (level != Level::error && level != Level::warning) return {{level, line}};
  const auto [found, isNew] = sorts.try_emplace(getName(level) + sortOf(line));
  Sort& sort = found->second;
  sort.level = level;
  sort.latest = line;
  // The clock of a recording may go back.
  if (!isNew && std::abs((now - sort.told).count()) < kTogether.count()) {
    ++sort.times;
    return {};
  }
  std::vector<FoldedLine> lines;
  if (isNew) lines = flush(now);
  ++sort.times;
  lines.push_back(xTell(sort, now));
  if (sorts.size() > kMostSorts) sorts.clear();
  return lines;
}

std::vector<FoldedLine> LineFolder::flush(Clock::time_point now) {
  std::vector<FoldedLine> lines;
  for (auto& [text, sort] : sorts)
    if (sort.times > 0) lines.push_back(xTell(sort, now));
  return lines;
}

FoldedLine LineFolder::xTell(Sort& sort, Clock::time_point now) {
  std::string text = sort.latest;
  if (sort.times > 1) text += " (again, " + std::to_string(sort.times) + " times)";
  sort.times = 0;
  sort.told = now;
  return {sort.level, text};
}

}  // namespace ko::log::detail
