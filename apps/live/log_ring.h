#pragma once

#include <cstddef>
#include <deque>
#include <mutex>
#include <vector>

#include "platform/ko/log.h"

namespace QV::app {

/** The last lines of the log, while it lives. Safe from any thread. */
class LogRing {
 public:
  static constexpr std::size_t kMost = 200;

  LogRing();

  /** Those since the last call, at most kMost. */
  std::vector<ko::log::Record> takeNew();
  std::vector<ko::log::Record> getAll() const;

 private:
  void xNote(const ko::log::Record& line);

  mutable std::mutex mutex;
  std::deque<ko::log::Record> lines;
  /** Of the last lines, how many are new. */
  std::size_t newLines = 0;
  ko::log::ScopedSink sink;
};

}  // namespace QV::app
