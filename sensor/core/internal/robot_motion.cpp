#include "sensor/core/internal/robot_motion.h"

#include <algorithm>
#include <cmath>

namespace QV::sensor {
namespace {

// A clock that jumps moves no robot.
constexpr double kLongestStep = 0.5;
constexpr double kLeastSpeed = 0.01;

}  // namespace

void RobotMotion::note(const Math::Pose2D& velocity, ko::Clock::time_point now) {
  const std::int64_t at = now.time_since_epoch().count();
  const double passed = static_cast<double>(at - notedAt) * 1e-9;
  const double seconds = notedAt == 0 ? 0.0 : std::clamp(passed, 0.0, kLongestStep);
  notedAt = at;
  const double speed = std::hypot(velocity.x, velocity.y);
  if (!std::isfinite(speed) || !std::isfinite(velocity.theta)) return;
  turned = turned + seconds * std::abs(static_cast<double>(velocity.theta));
  went = went + seconds * speed;
  const bool goes = speed > kLeastSpeed;
  directionX = goes ? static_cast<float>(velocity.x / speed) : 0.0f;
  directionY = goes ? static_cast<float>(velocity.y / speed) : 0.0f;
  isMoving = goes || std::abs(velocity.theta) > kLeastSpeed;
}

RobotMotion::State RobotMotion::getState() const {
  return {turned, went, directionX, directionY, isMoving};
}

}  // namespace QV::sensor
