#pragma once

#include "platform/api.h"
#include "platform/math/pose2d.h"
#include "platform/math/position.h"

namespace QV::detail {

/** A position in a map's own frame, in cells: cell (c, r) covers [c, c + 1) by [r, r + 1). */
struct GridPoint {
  double x = 0.0;
  double y = 0.0;
};

/**
 * The pose of a map in the world: `origin` is the corner of cell (0, 0), `resolution` in metres.
 */
class QV_API GridFrame {
 public:
  GridFrame(const Math::Pose2D& origin, float resolution);

  /** Converts between the map's own frame and the world, where lengths are in metres. */
  GridPoint toGrid(const Math::Position2D& position) const;
  Math::Position2D toWorld(const GridPoint& point) const;

 private:
  double x;
  double y;
  double cosYaw;
  double sinYaw;
  double scale;
};

}  // namespace QV::detail
