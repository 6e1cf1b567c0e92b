#pragma once

#include <cstddef>
#include <deque>
#include <mutex>
#include <vector>

#include "platform/api.h"
#include "platform/ko/log.h"

namespace QV::session {

/** The lines of the log that nobody took yet, while it lives. Safe from any thread. */
class QV_API LogRing {
 public:
  static constexpr std::size_t kMost = 200;

  LogRing();

  /** Those since the last call, the last kMost. */
  std::vector<ko::log::Record> takeNew();

 private:
  void xNote(const ko::log::Record& line);

  mutable std::mutex mutex;
  std::deque<ko::log::Record> lines;
  ko::log::ScopedSink sink;
};

}  // namespace QV::session
