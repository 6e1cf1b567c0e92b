#pragma once

#include <vector>

#include "platform/math/position.h"
#include "session/snapshot.h"

namespace QV::outlets {

/** The most points of one sensor. */
constexpr std::size_t kMostPagePoints = 1000;

/** Hits and echoes from above, in the map: so few that every page can draw them. */
std::vector<Math::Position2D> pagePointsOf(const session::Marks& marks);

}  // namespace QV::outlets
