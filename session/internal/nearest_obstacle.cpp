#include "session/internal/nearest_obstacle.h"

#include <cmath>

namespace QV::session {

std::optional<float> nearestObstacle(const Math::MetricalData& record) {
  // Rays that met nothing are points at the maximum range, give or take a rounding.
  const float limit = record.fieldOfView.maxRange * (1.0f - 1e-5f);
  std::optional<float> nearest;
  for (const auto& point : record.points) {
    const float range = std::hypot(point.x, point.y);
    if (range < limit && (!nearest || range < *nearest)) nearest = range;
  }
  return nearest;
}

}  // namespace QV::session
