#pragma once

#include <map>
#include <string>
#include <vector>

#include "session/internal/session_robot.h"
#include "session/snapshot.h"

namespace QV::session {

/** The touches of a robot. Each one stays for a second after its end. The robot must outlive it. */
class TouchLook {
 public:
  explicit TouchLook(SessionRobot& robot) : robot(robot) {}

  /** Notes the touches. Call it at least every 20 ms. */
  void note();
  std::vector<TouchState> look() const;

 private:
  struct Touch {
    Math::Position2D position;
    ko::Clock::time_point began;
    ko::Clock::time_point last;
  };

  SessionRobot& robot;
  std::map<std::string, Touch> touches;
};

}  // namespace QV::session
