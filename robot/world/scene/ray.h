#pragma once

#include "platform/api.h"
#include "platform/math/position.h"
#include "platform/math/transform.h"

namespace QV::robot {

/** A line in the map from `origin` along `direction`, of unit length; z counts from the floor. */
struct QV_API Ray {
  Math::Position3D origin;
  Math::Position3D direction;

  /** Where a sensor of that frame in the map looks: along its x axis. */
  static Ray ahead(const Math::Transform& frame) {
    return {Math::position3DFromTransform(frame), {frame(0, 0), frame(1, 0), frame(2, 0)}};
  }

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
