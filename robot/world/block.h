#pragma once

#include <optional>

#include "platform/math/pose2d.h"
#include "platform/math/position.h"

namespace QV::robot {

/** A line in the map from `origin` along `direction`, of unit length; z counts from the floor. */
struct Ray {
  Math::Position3D origin;
  Math::Position3D direction;

  Math::Position3D at(float distance) const {
    return {origin.x + distance * direction.x, origin.y + distance * direction.y,
            origin.z + distance * direction.z};
  }
};

/** A part of a ray, in metres from its origin. */
struct Stretch {
  float from;
  float to;
};

/** An upright block in the map: a box, or the inside of a hole. */
class Block {
 public:
  /** `pose` is its centre; `length` and `width` lie along its own x and y. */
  Block(const Math::Pose2D& pose, float length, float width, float bottom, float top);

  /** The part of the ray in the block; nothing if it misses. */
  std::optional<Stretch> clip(const Ray& ray) const;

  /** In the map, of its outline or inside; what lies nearest to `position`. */
  Math::Position2D nearestTo(const Math::Position2D& position) const;

  float getBottom() const { return bottom; }
  float getTop() const { return top; }

 private:
  const Math::Pose2D pose;
  const Math::Pose2D inverse;
  const float halfLength;
  const float halfWidth;
  const float bottom;
  const float top;
};

}  // namespace QV::robot
