#pragma once

#include <string>

#include "robot/services/internal/input_listener.h"
#include "ros2/recording/internal/background_bag.h"
#include "session/session.h"

namespace QV::ros2 {

/** Writes where the robot and its sensors are: tf, odometry and the clock. */
class FrameTopics {
 public:
  /** `base` is the frame of the robot. Writes where its sensors are mounted. */
  FrameTopics(BackgroundBag& writer, const session::Session& session, const std::string& base);

  void writeStep(const robot::BodyStep& step, ko::Clock::time_point time);
  void writeClock(ko::Clock::time_point time);

 private:
  void xWriteMountings(const session::Session& session);

  BackgroundBag& writer;
  const std::string base;
  const std::uint16_t tf;
  const std::uint16_t tfStatic;
  const std::uint16_t odometry;
  const std::uint16_t clock;
};

}  // namespace QV::ros2
