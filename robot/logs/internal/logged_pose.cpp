#include "robot/logs/internal/logged_pose.h"

#include <cmath>
#include <numbers>

namespace QV::robot {
namespace {

// Poses are written with six decimals, and turned by a heading of six.
constexpr double kSamePlace = 1e-3;

}  // namespace

// Double precision is needed: floats of a pose far away would move the laser on the robot.
LoggedPose laserOnRobot(const LoggedPose& laser, const LoggedPose& robot) {
  const double c = std::cos(robot.theta);
  const double s = std::sin(robot.theta);
  const double dx = laser.x - robot.x;
  const double dy = laser.y - robot.y;
  constexpr double kTurn = 2.0 * std::numbers::pi;
  return {c * dx + s * dy, c * dy - s * dx, std::remainder(laser.theta - robot.theta, kTurn)};
}

bool isSamePlace(const LoggedPose& a, const LoggedPose& b) {
  return std::abs(a.x - b.x) < kSamePlace && std::abs(a.y - b.y) < kSamePlace &&
         std::abs(std::remainder(a.theta - b.theta, 2.0 * std::numbers::pi)) < kSamePlace;
}

Math::Pose2D toPose2D(const LoggedPose& pose) {
  return {static_cast<float>(pose.x), static_cast<float>(pose.y), static_cast<float>(pose.theta)};
}

}  // namespace QV::robot
