#include "ros2/recording/internal/bag_robot.h"

#include <algorithm>

#include "session/usage_error.h"

namespace QV::ros2 {

void BagRobot::setPose(const Math::Pose2D&) {
  throw session::UsageError("a robot that can be moved expected, a recording given");
}

void BagRobot::drive(const Math::Pose2D& velocity) {
  if (velocity == Math::Pose2D()) return;
  throw session::UsageError("a robot that can be driven expected, a recording given");
}

void BagRobot::follow(const session::PathFollower&, double) {
  throw session::UsageError("a robot that can be driven expected, a recording given");
}

double BagRobot::getShareDone() const {
  const BagTimes times = getBag().getTimes();
  const auto whole = static_cast<double>(times.end - times.start);
  const auto done = static_cast<double>((ko::Clock::now() - getStart()).count());
  return whole > 0.0 ? std::clamp(done / whole, 0.0, 1.0) : 1.0;
}

}  // namespace QV::ros2
