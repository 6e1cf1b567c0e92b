#pragma once

#include "platform/api.h"
#include "platform/math/position.h"

namespace QV::robot {

/** A line in the map from `origin` along `direction`, of unit length; z counts from the floor. */
struct QV_API Ray {
  Math::Position3D origin;
  Math::Position3D direction;

  /** What lies at a range, in metres. */
  Math::Position3D at(float range) const {
    return {origin.x + range * direction.x, origin.y + range * direction.y,
            origin.z + range * direction.z};
  }
};

/** A part of a ray: the ranges between which it lies, metres. */
struct QV_API Stretch {
  float from;
  float to;
};

}  // namespace QV::robot
