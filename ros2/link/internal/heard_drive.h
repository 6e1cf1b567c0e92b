#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "platform/ko/clock.h"
#include "platform/math/pose2d.h"
#include "ros2/graph/graph.h"
#include "ros2/link/internal/heard_time.h"

namespace QV::ros2 {

/**
 * Publishes a robot's velocity again and again, because robots stop without it: TwistStamped if
 * somebody subscribes to that, else Twist. Nothing is published before the first command that moves
 * it. The log says once that nobody subscribes. Thread-safe.
 */
class HeardDrive {
 public:
  /** Both must outlive it. */
  HeardDrive(GraphNode& node, HeardTime& time, std::string topic)
      : node(node), time(time), topic(std::move(topic)) {}

  /** Forward, leftward (m/s), turning (rad/s). */
  void set(const Math::Pose2D& newVelocity);
  /** Publishes the command again if it is due. */
  void repeat();

 private:
  void xSend();
  void xLookForReaders();

  GraphNode& node;
  HeardTime& time;
  const std::string topic;
  std::mutex mutex;
  std::unique_ptr<Publisher> plain;
  std::unique_ptr<Publisher> stamped;
  Math::Pose2D velocity;
  ko::Clock::time_point changed;
  std::optional<ko::Clock::time_point> sent;
  /** The last time at which somebody subscribed to it, or no command moved the robot. */
  ko::Clock::time_point heeded;
  bool isMissed = false;
};

}  // namespace QV::ros2
