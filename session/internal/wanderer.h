#pragma once

#include "platform/math/pose2d.h"
#include "platform/navigation/occupancy_map.h"

namespace QV::session {

/**
 * Drives a robot at random in free space: straight on while there is room, otherwise a turn on the
 * spot. It uses the map, not the sensors, so sensors may be off. The map must outlive it.
 */
class Wanderer {
 public:
  explicit Wanderer(const OccupancyMap& map) : map(map) {}

  /** Returns the next velocity, m/s and rad/s, in the ground frame. Call it ten times a second.
   * `velocity` is the actual one. */
  Math::Pose2D step(const Math::Pose2D& pose, const Math::Pose2D& velocity);

 private:
  bool xIsFree(const Math::Pose2D& pose) const;

  const OccupancyMap& map;
  Math::Pose2D wanted;
  float turn = 0.0f;
  int turnsLeft = 0;
};

}  // namespace QV::session
