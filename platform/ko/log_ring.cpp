#include <utility>

#include "platform/ko/log.h"

namespace ko::log {

LogRing::LogRing() : sink(Level::verbose, [this](const Record& line) { xNote(line); }) {}

std::vector<Record> LogRing::takeNew() {
  std::lock_guard lock(mutex);
  const auto taken = std::exchange(lines, {});
  return {taken.begin(), taken.end()};
}

void LogRing::xNote(const Record& line) {
  // Text from a file may be very long, so lines are cut.
  constexpr std::size_t kLongest = 2000;
  std::lock_guard lock(mutex);
  lines.push_back(line);
  if (lines.back().message.size() > kLongest) lines.back().message.resize(kLongest);
  if (lines.size() > kMost) lines.pop_front();
}

}  // namespace ko::log
