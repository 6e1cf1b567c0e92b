#include "platform/navigation/grid_frame.h"

#include <cmath>

#include "platform/navigation/occupancy_map.h"

namespace QV::detail {

GridPoint toGrid(const OccupancyMap& map, const Math::Position2D& position) {
  const Math::Pose2D& origin = map.getOrigin();
  const double yaw = origin.theta;
  const double x = static_cast<double>(position.x) - origin.x;
  const double y = static_cast<double>(position.y) - origin.y;
  const double scale = map.getResolution();
  return {(std::cos(yaw) * x + std::sin(yaw) * y) / scale,
          (std::cos(yaw) * y - std::sin(yaw) * x) / scale};
}

Math::Position2D toWorld(const OccupancyMap& map, const GridPoint& point) {
  const Math::Pose2D& origin = map.getOrigin();
  const double yaw = origin.theta;
  const double x = point.x * map.getResolution();
  const double y = point.y * map.getResolution();
  return {static_cast<float>(origin.x + std::cos(yaw) * x - std::sin(yaw) * y),
          static_cast<float>(origin.y + std::sin(yaw) * x + std::cos(yaw) * y)};
}

}  // namespace QV::detail
