#include "robot/world/scene/internal/body.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace QV::robot {
namespace {

constexpr double kNanosecondsPerSecond = 1e9;
// The longest move keeps the robot from jumping over an obstacle, up to 5 m/s.
constexpr double kLongestMove = 0.02;
// A pause of the process is not driven on.
constexpr double kLongestCatchUp = 1.0;
// The distances at which a touch begins and ends.
constexpr float kTouch = 0.004f;
constexpr float kRelease = 0.008f;
constexpr int kBisections = 6;

float wrapped(double angle) {
  return static_cast<float>(std::remainder(angle, 2.0 * std::numbers::pi));
}

}  // namespace

Body::Body(const Scene& scene, const BodySize& size, const Math::Pose2D& start)
    : scene(scene), size(size) {
  setPose(start);
}

void Body::setOdometryErrors(float distanceError, float turnError) {
  distanceFactor = 1.0 + distanceError;
  turnFactor = 1.0 + turnError;
}

void Body::setPose(const Math::Pose2D& pose) {
  place = {pose.x, pose.y, pose.theta};
  contact.reset();
  blocked = false;
}

Math::Pose2D Body::getPose() const {
  return place.toPose2D();
}

Math::Pose2D Body::getOdometry() const {
  return odometry.toPose2D();
}

void Body::move(ko::Duration duration, const People& people) {
  double left =
      std::min(static_cast<double>(duration.count()) / kNanosecondsPerSecond, kLongestCatchUp);
  for (; left > 0.0; left -= kLongestMove) xMoveBriefly(std::min(left, kLongestMove), people);
}

void Body::xMoveBriefly(double seconds, const People& people) {
  const double forward = command.x * seconds;
  const double left = command.y * seconds;
  const double turn = command.theta * seconds;
  const double share = xFreeShare(forward, left, turn, people);
  if (share < 1.0 && !blocked) ++collisionCount;
  blocked = share < 1.0;
  place = place.moved(forward * share, left * share, turn);
  odometry = odometry.moved(forward * share * distanceFactor, left * share * distanceFactor,
                            turn * turnFactor);
  velocity = {command.x * static_cast<float>(share), command.y * static_cast<float>(share),
              command.theta};
  xFeel(people);
}

// A body that is in something already may move as long as it does not get deeper.
double Body::xFreeShare(double forward, double left, double turn, const People& people) const {
  if (forward == 0.0 && left == 0.0) return 1.0;
  const float room = std::min(xRoomAt(place, people), 0.0f);
  const auto isFree = [&](double share) {
    return xRoomAt(place.moved(forward * share, left * share, turn), people) >= room;
  };
  if (isFree(1.0)) return 1.0;
  double free = 0.0;
  double taken = 1.0;
  for (int i = 0; i < kBisections; ++i) {
    const double middle = 0.5 * (free + taken);
    (isFree(middle) ? free : taken) = middle;
  }
  return free;
}

float Body::xRoomAt(const Place& at, const People& people) const {
  const Math::Position2D centre(static_cast<float>(at.x), static_cast<float>(at.y));
  return scene.findNearest(centre, size.radius + kRelease, size.height, people).distance -
         size.radius;
}

void Body::xFeel(const People& people) {
  const Math::Position2D centre = Math::position2DFromPose2D(getPose());
  const float margin = contact ? kRelease : kTouch;
  const auto nearest = scene.findNearest(centre, size.radius + margin, size.height, people);
  contact.reset();
  if (std::isinf(nearest.distance)) return;
  contact = wrapped(std::atan2(nearest.position.y - centre.y, nearest.position.x - centre.x) -
                    place.theta);
}

Body::Place Body::Place::moved(double forward, double left, double turn) const {
  const double heading = theta + turn * 0.5;
  return {x + std::cos(heading) * forward - std::sin(heading) * left,
          y + std::sin(heading) * forward + std::cos(heading) * left, theta + turn};
}

Math::Pose2D Body::Place::toPose2D() const {
  return {static_cast<float>(x), static_cast<float>(y), wrapped(theta)};
}

}  // namespace QV::robot
