#pragma once

#include "platform/ko/clock.h"

namespace ko {

/**
 * Takes over ko::Clock for its life: time stands still until the owner advances it. One at a time
 * in a process: a second one throws std::logic_error. Only the owner's thread may advance.
 */
class QV_API SimulatedTime {
 public:
  explicit SimulatedTime(Clock::time_point start = Clock::time_point());
  ~SimulatedTime();
  SimulatedTime(const SimulatedTime&) = delete;
  SimulatedTime& operator=(const SimulatedTime&) = delete;

  /** Moves time on by `duration`; a negative one throws std::invalid_argument. */
  void advance(Duration duration);
};

}  // namespace ko
