#pragma once

#include "platform/api.h"
#include "platform/math/pose2d.h"
#include "platform/navigation/occupancy_map.h"

namespace QV::session {

/**
 * Drives a robot at random in free space: straight on while there is room, otherwise a turn on the
 * spot. After a whole turn without room, less is enough. It uses the map, not the sensors, so
 * sensors may be off. The map must outlive it.
 */
class QV_API Wanderer {
 public:
  explicit Wanderer(const OccupancyMap& map) : map(map) {}

  /** Returns the next velocity, m/s and rad/s, in the ground frame. Call it ten times a second.
   * `velocity` is the actual one. */
  Math::Pose2D step(const Math::Pose2D& pose, const Math::Pose2D& velocity);

 private:
  void xTurn(const Math::Pose2D& pose);
  bool xHasWay(const Math::Pose2D& pose);
  /** Looks at a share of the room that a robot with space around it wants. */
  bool xIsFree(const Math::Pose2D& pose, float share) const;

  const OccupancyMap& map;
  Math::Pose2D wanted;
  float turn = 0.0f;
  int turnsLeft = 0;
  /** The speed of the last turn, rad/s; 0 before the first. */
  float side = 0.0f;
  /** The steps since this turn, or this drive, began. */
  int steps = 0;
  /** The share of the room wanted that is enough to end a turn. */
  float room = 1.0f;
};

}  // namespace QV::session
