#pragma once

#include <cstddef>
#include <optional>

#include "platform/ko/clock.h"
#include "platform/math/pose2d.h"
#include "robot/world/scene/internal/scene.h"

namespace QV::robot {

/** The room that a body takes: an upright cylinder about its root link. Metres. */
struct BodySize {
  float radius;
  float height;
};

/**
 * A round body that drives as it is told until something stands in its way; that stops it, though
 * not its turning. For one thread at a time.
 */
class Body {
 public:
  Body(const Scene& scene, const BodySize& size, const Math::Pose2D& start);

  /** Sets what the odometry makes too much of each way and each turn, as shares. */
  void setOdometryErrors(float distanceError, float turnError);
  /** m/s and rad/s, in its own frame. */
  void setCommand(const Math::Pose2D& velocity) { command = velocity; }
  void setPose(const Math::Pose2D& pose);

  void move(ko::Duration duration, const People& people);

  /** Returns the pose in the map, theta from -pi to pi. */
  Math::Pose2D getPose() const;
  /** Returns the velocity of the last move, as it was; m/s and rad/s in its own frame. */
  const Math::Pose2D& getVelocity() const { return velocity; }
  Math::Pose2D getOdometry() const;

  /** Returns the direction in which it touches something, in its own frame. */
  std::optional<float> getContact() const { return contact; }
  /** Returns how often it ran into something. */
  std::size_t getCollisionCount() const { return collisionCount; }

 private:
  struct Place {
    double x = 0.0;
    double y = 0.0;
    double theta = 0.0;

    /** Returns the place after a way and a turn in its own frame; the way goes along the mean
     * heading. */
    Place moved(double forward, double left, double turn) const;
    Math::Pose2D toPose2D() const;
  };

  void xMoveBriefly(double seconds, const People& people);
  double xFreeShare(double forward, double left, double turn, const People& people) const;
  float xRoomAt(const Place& place, const People& people) const;
  void xFeel(const People& people);

  const Scene& scene;
  const BodySize size;
  Place place;
  Place odometry;
  double distanceFactor = 1.0;
  double turnFactor = 1.0;
  Math::Pose2D command;
  Math::Pose2D velocity;
  std::optional<float> contact;
  bool blocked = false;
  std::size_t collisionCount = 0;
};

}  // namespace QV::robot
