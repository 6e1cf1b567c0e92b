#pragma once

#include <vector>

#include "platform/math/pose2d.h"
#include "platform/navigation/occupancy_map.h"
#include "session/snapshot.h"

namespace QV::outlets {

/** A rectangle of the world, metres. */
struct WorldArea {
  double left;
  double bottom;
  double right;
  double top;
};

/** The part that a picture shows of the map, the robot's way and where its sensors look. */
WorldArea findAreaToShow(const std::vector<Math::Pose2D>& way, const session::Snapshot& snapshot);

/** `count` + 1 positions in the map along the arc of a view at a range, from right to left. */
std::vector<Math::Position2D> arcOf(const session::SensorState::View& view, float range,
                                    int count = 72);

}  // namespace QV::outlets
