#pragma once

#include <algorithm>

#include "platform/ko/clock.h"

namespace QV::robot {

/** Says when something that is done once a period is due; at first it is. */
class Beat {
 public:
  explicit Beat(ko::Duration period) : period(period) {}

  bool isDue(ko::Clock::time_point now) {
    if (now < next) return false;
    // Missed beats are not made up.
    next = std::max(next + period, now);
    return true;
  }

 private:
  ko::Duration period;
  ko::Clock::time_point next = ko::Clock::time_point();
};

}  // namespace QV::robot
