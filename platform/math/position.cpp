#include "platform/math/position.h"

#include <cmath>

namespace QV::Math {

Position2D Position2D::fromPolarCoordinates(float radius, float angle) {
  return {radius * std::cos(angle), radius * std::sin(angle)};
}

float norm(const Position2D& position) {
  return std::hypot(position.x, position.y);
}

float norm(const Position3D& position) {
  return std::hypot(position.x, position.y, position.z);
}

}  // namespace QV::Math
