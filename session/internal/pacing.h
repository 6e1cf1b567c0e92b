#pragma once

#include "platform/ko/clock.h"

namespace QV::session {

/** The pace of simulated time against real time. */
class Pacing {
 public:
  /** The length of a step. */
  static constexpr ko::Duration kStep{100'000'000};

  void pause(bool on) { paused = on; }
  bool isPaused() const { return paused; }
  /** Simulated seconds per real second, above 0. */
  void setSpeed(double newSpeed) { speed = newSpeed; }
  double getSpeed() const { return speed; }

  /** The simulated time for a real duration. */
  ko::Duration scale(ko::Duration machine) const;

 private:
  bool paused = false;
  double speed = 1.0;
};

}  // namespace QV::session
