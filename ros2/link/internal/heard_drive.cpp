#include "ros2/link/internal/heard_drive.h"

#include <utility>

#include "platform/ko/log.h"
#include "ros2/messages/geometry_msgs.h"

namespace QV::ros2 {
namespace {

constexpr ko::Duration kPeriod{100'000'000};
// The stop command is repeated, but not for ever.
constexpr ko::Duration kStanding{500'000'000};
// Subscribers that are there are found sooner.
constexpr ko::Duration kUnheeded{1'000'000'000};

}  // namespace

void HeardDrive::set(const Math::Pose2D& newVelocity) {
  const std::lock_guard lock(mutex);
  if (!plain) {
    if (newVelocity == Math::Pose2D()) return;
    plain = node.publish(topic, geometry_msgs::Twist::getType());
    stamped = node.publish(topic, geometry_msgs::TwistStamped::getType());
  }
  if (newVelocity == velocity) return;
  velocity = newVelocity;
  changed = ko::Clock::now();
  if (!sent) heeded = changed;
  xSend();
}

void HeardDrive::repeat() {
  const std::lock_guard lock(mutex);
  if (!sent) return;
  const auto now = ko::Clock::now();
  const bool stands = velocity == Math::Pose2D() && now - changed > kStanding;
  if (stands || now - *sent < kPeriod) return;
  xSend();
  xLookForReaders();
}

void HeardDrive::xLookForReaders() {
  const auto now = ko::Clock::now();
  const bool hasReaders = plain->getReaderCount() + stamped->getReaderCount() > 0;
  if (hasReaders || velocity == Math::Pose2D()) heeded = now;
  if (hasReaders) isMissed = false;
  if (now - heeded <= kUnheeded || std::exchange(isMissed, true)) return;
  ko::log::warning("ROS2", "drive")
      << topic << ": nobody subscribes to it, so the robot does not move";
}

void HeardDrive::xSend() {
  sent = ko::Clock::now();
  const geometry_msgs::Twist twist{{velocity.x, velocity.y, 0.0}, {0.0, 0.0, velocity.theta}};
  // Robots that take both types would get each command twice.
  if (stamped->getReaderCount() > 0)
    return stamped->write(geometry_msgs::TwistStamped{{time.getStamp(), "base_link"}, twist});
  plain->write(twist);
}

}  // namespace QV::ros2
