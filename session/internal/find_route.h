#pragma once

#include <vector>

#include "platform/api.h"
#include "platform/math/position.h"
#include "platform/navigation/occupancy_map.h"
#include "session/internal/room_map.h"

namespace QV::session {

/**
 * A short way of straight lines from `from` to `to` on which a robot of `radius` (m) keeps away
 * from what is not free, at the start as far as it does already. Empty if there is none.
 */
QV_API std::vector<Math::Position2D> findRoute(const OccupancyMap& map,
                                               const Math::Position2D& from,
                                               const Math::Position2D& to, float radius);

}  // namespace QV::session
