#pragma once

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

}  // namespace QV::robot
