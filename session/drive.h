#pragma once

#include "platform/ko/simulated_time.h"
#include "session/internal/path_follower.h"
#include "session/session.h"

namespace QV::session {

/** Takes a robot along a path as simulated time goes by. All three must outlive it. */
class Drive {
 public:
  /** It starts now. */
  Drive(const PathFollower& path, Session& robot, ko::SimulatedTime& time);

  /** Until `end` seconds after the start; not before the last end. */
  void goOnTo(double end);

 private:
  const PathFollower& path;
  Session& robot;
  ko::SimulatedTime& time;
  const ko::Clock::time_point start;
  double seconds = 0.0;
};

}  // namespace QV::session
