#include "platform/navigation/internal/grid_frame.h"

#include <cmath>

namespace QV::detail {

GridFrame::GridFrame(const Math::Pose2D& origin, float resolution)
    : x(origin.x),
      y(origin.y),
      cosYaw(std::cos(static_cast<double>(origin.theta))),
      sinYaw(std::sin(static_cast<double>(origin.theta))),
      scale(resolution) {}

GridPoint GridFrame::toGrid(const Math::Position2D& position) const {
  const double fromX = position.x - x;
  const double fromY = position.y - y;
  return {(cosYaw * fromX + sinYaw * fromY) / scale, (cosYaw * fromY - sinYaw * fromX) / scale};
}

Math::Position2D GridFrame::toWorld(const GridPoint& point) const {
  const double alongX = point.x * scale;
  const double alongY = point.y * scale;
  return {static_cast<float>(x + cosYaw * alongX - sinYaw * alongY),
          static_cast<float>(y + sinYaw * alongX + cosYaw * alongY)};
}

}  // namespace QV::detail
