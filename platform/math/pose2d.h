#pragma once

#include <vector>

#include "platform/api.h"
#include "platform/math/position.h"

namespace QV::Math {

/**
 * A frame in the plane: x and y in metres, theta in radians, counted from x towards y.
 *
 * A pose of B in A, times a position in B, is the position in A. So chains read from left to right:
 * `sensorInRobot` placed in the map is `robotInMap * sensorInRobot`. A value; thread-safe to read.
 *
 *     const QV::Math::Pose2D robotInMap(3.0f, 6.3f, 1.57f), sensorInRobot(0.2f, 0.0f, 0.0f);
 *     const QV::Math::Position2D echoInSensor(1.0f, 0.0f);
 *     const QV::Math::Position2D echoInMap = robotInMap * sensorInRobot * echoInSensor;
 */
struct QV_API Pose2D {
  float x = 0.0f;
  float y = 0.0f;
  float theta = 0.0f;

  Pose2D() = default;
  Pose2D(float x, float y, float theta) : x(x), y(y), theta(theta) {}
  /** Takes {x, y, theta}; another size throws std::invalid_argument. */
  explicit Pose2D(const std::vector<float>& values);

  friend bool operator==(const Pose2D&, const Pose2D&) = default;
};

/**
 * Places pose `a`, given in the frame of `b`, in the frame that `b` is given in. Theta is a plain
 * sum, not wrapped. The parameters stand in this order, b before a, as the interface has them.
 */
QV_API Pose2D operator*(const Pose2D& b, const Pose2D& a);

/** Places position `a`, given in the frame of `b`, in the frame that `b` is given in. */
QV_API Position2D operator*(const Pose2D& b, const Position2D& a);

/**
 * A pose for many positions: places them as `pose * position` does, to the last bit, and looks the
 * angle up once.
 */
class QV_API Placement2D {
 public:
  explicit Placement2D(const Pose2D& pose);

  Position2D operator*(const Position2D& position) const {
    return {x + cosTheta * position.x - sinTheta * position.y,
            y + sinTheta * position.x + cosTheta * position.y};
  }

 private:
  float x;
  float y;
  float cosTheta;
  float sinTheta;
};

/** Inverts a pose: pinv(pose) * pose is the origin. The name is the interface's. */
QV_API Pose2D pinv(const Pose2D& pose);

QV_API Position2D position2DFromPose2D(const Pose2D& pose);

}  // namespace QV::Math
