#include "session/snapshot.h"

namespace QV::session {

std::vector<Math::Position3D> positionsOn(const EchoMark& echo, int count) {
  std::vector<Math::Position3D> positions;
  for (int i = 0; i < count; ++i) {
    const float share = static_cast<float>(i) / static_cast<float>(count - 1) - 0.5f;
    const auto position =
        Math::Position2D::fromPolarCoordinates(echo.range, share * echo.angularRange);
    positions.emplace_back(echo.origin * position, echo.height);
  }
  return positions;
}

}  // namespace QV::session
