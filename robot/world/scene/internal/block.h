#pragma once

#include <optional>

#include "platform/math/pose2d.h"
#include "robot/world/scene/surroundings.h"

namespace QV::robot {

/** An upright block in the map: a box, or the inside of a hole. */
class Block {
 public:
  /** `pose` is its centre; `length` and `width` lie along its own x and y. */
  Block(const Math::Pose2D& pose, float length, float width, float bottom, float top);

  /** The part of the ray in the block; nothing if it misses. */
  std::optional<Stretch> clip(const Ray& ray) const;
  /** The same for a block without bottom and top. */
  std::optional<Stretch> clipOutline(const Ray& ray) const;

  /** Returns the point in the map, of its outline or inside, that lies nearest to `position`. */
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
