#include "session/internal/log_ring.h"

#include <utility>

namespace QV::session {

LogRing::LogRing()
    : sink(ko::log::Level::verbose, [this](const ko::log::Record& line) { xNote(line); }) {}

std::vector<ko::log::Record> LogRing::takeNew() {
  std::lock_guard lock(mutex);
  const auto taken = std::exchange(lines, {});
  return {taken.begin(), taken.end()};
}

void LogRing::xNote(const ko::log::Record& line) {
  // What a file said is as long as it was.
  constexpr std::size_t kLongest = 2000;
  std::lock_guard lock(mutex);
  lines.push_back(line);
  if (lines.back().message.size() > kLongest) lines.back().message.resize(kLongest);
  if (lines.size() > kMost) lines.pop_front();
}

}  // namespace QV::session
