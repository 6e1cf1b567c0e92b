#pragma once

#include "platform/math/position.h"

namespace QV {
class OccupancyMap;
}

namespace QV::detail {

/** A position in a map's own frame, in cells: cell (c, r) covers [c, c + 1) by [r, r + 1). */
struct GridPoint {
  double x = 0.0;
  double y = 0.0;
};

GridPoint toGrid(const OccupancyMap& map, const Math::Position2D& position);
Math::Position2D toWorld(const OccupancyMap& map, const GridPoint& point);

}  // namespace QV::detail
