#include "ros2/recording/internal/bag_robot.h"

#include <algorithm>

#include <boost/make_shared.hpp>

#include "session/usage_error.h"

namespace QV::ros2 {

void BagRobot::setPose(const Math::Pose2D&) {
  throw session::UsageError("a recording can't be moved or driven");
}

void BagRobot::drive(const Math::Pose2D& velocity) {
  if (velocity == Math::Pose2D()) return;
  throw session::UsageError("a recording can't be moved or driven");
}

void BagRobot::follow(const session::TimedPath&, double) {
  throw session::UsageError("a recording can't be moved or driven");
}

double BagRobot::getShareDone() const {
  const auto whole = static_cast<double>(getLength()->count());
  const auto done = static_cast<double>((ko::Clock::now() - getStart()).count());
  return whole > 0.0 ? std::clamp(done / whole, 0.0, 1.0) : 1.0;
}

std::optional<ko::Duration> BagRobot::getLength() const {
  const BagTimes times = getBag().getTimes();
  return ko::Duration(static_cast<std::int64_t>(times.end - times.start));
}

boost::shared_ptr<OccupancyMap> makeUnknownMap() {
  constexpr int kSide = 300;
  constexpr float kResolution = 0.2f;
  constexpr float kHalf = 0.5f * kResolution * static_cast<float>(kSide);
  return boost::make_shared<OccupancyMap>(kSide, kSide, kResolution,
                                          Math::Pose2D(-kHalf, -kHalf, 0.0f));
}

}  // namespace QV::ros2
