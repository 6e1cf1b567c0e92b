#pragma once

#include "platform/math/pose2d.h"
#include "platform/navigation/occupancy_map.h"

namespace QV::session {

/**
 * Drives a robot about by what the map has before it, so that sensors can be switched off while it
 * does: straight on while there is room, else a turn on the spot. The map must outlive it.
 */
class Wanderer {
 public:
  explicit Wanderer(const OccupancyMap& map) : map(map) {}

  /** The next velocity, m/s and rad/s, in the ground frame; ten times a second. `velocity` is what
   * the robot does. */
  Math::Pose2D step(const Math::Pose2D& pose, const Math::Pose2D& velocity);

 private:
  bool xIsFree(const Math::Pose2D& pose) const;

  const OccupancyMap& map;
  Math::Pose2D wanted;
  float turn = 0.0f;
  int turnsLeft = 0;
};

}  // namespace QV::session
