#pragma once

#include <vector>

#include "platform/api.h"
#include "platform/math/position.h"

namespace QV::Math {

/** A frame in the plane: x and y in metres, theta in radians, counted from x towards y. */
struct QV_API Pose2D {
  float x = 0.0f;
  float y = 0.0f;
  float theta = 0.0f;

  Pose2D() = default;
  Pose2D(float x, float y, float theta) : x(x), y(y), theta(theta) {}
  /** From {x, y, theta}; another size throws std::invalid_argument. */
  explicit Pose2D(const std::vector<float>& values);

  friend bool operator==(const Pose2D&, const Pose2D&) = default;
};

/** Pose `a`, given in the frame of `b`, in the frame that `b` is given in. Theta is a plain sum. */
QV_API Pose2D operator*(const Pose2D& b, const Pose2D& a);

/** Position `a`, given in the frame of `b`, in the frame that `b` is given in. */
QV_API Position2D operator*(const Pose2D& b, const Position2D& a);

/** Places many positions as `pose * position` does, to the last bit; looks the angle up once. */
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

/** The inverse: pinv(pose) * pose is the origin. */
QV_API Pose2D pinv(const Pose2D& pose);

QV_API Position2D position2DFromPose2D(const Pose2D& pose);

}  // namespace QV::Math
