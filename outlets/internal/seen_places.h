#pragma once

#include <vector>

#include "session/snapshot.h"

namespace QV::outlets {

/** The points that an echo's arc is drawn by, where it is drawn by points. */
inline constexpr int kArcPoints = 15;

/** All places in the map that a sensor sees: hits, floor, and the points of arcs. */
std::vector<Math::Position3D> seenPlacesOf(const session::Marks& marks);

}  // namespace QV::outlets
