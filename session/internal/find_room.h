#pragma once

#include "platform/api.h"
#include "platform/math/pose2d.h"
#include "platform/navigation/occupancy_map.h"

namespace QV::session {

/**
 * Finds a pose with room for a robot in a map: of the places that are a metre from anything not
 * free, or as far as there are, the one nearest to the middle. Heading 0. Returns the middle where
 * nothing is free.
 */
QV_API Math::Pose2D findRoom(const OccupancyMap& map);

}  // namespace QV::session
