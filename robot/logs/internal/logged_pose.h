#pragma once

#include "platform/math/pose2d.h"

namespace QV::robot {

/** A pose as a log has it. Metres, radians. */
struct LoggedPose {
  double x;
  double y;
  double theta;
};

/** Returns where a laser sits on the robot, by their places in the log. */
LoggedPose laserOnRobot(const LoggedPose& laser, const LoggedPose& robot);

bool isSamePlace(const LoggedPose& a, const LoggedPose& b);

Math::Pose2D toPose2D(const LoggedPose& pose);

}  // namespace QV::robot
