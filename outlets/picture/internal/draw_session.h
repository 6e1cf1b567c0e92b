#pragma once

#include <vector>

#include <opencv2/core.hpp>

#include "platform/math/pose2d.h"
#include "session/snapshot.h"

namespace QV::outlets {

/**
 * A page with the map, the robot's way, one pose or more, and over it what the sensors of the
 * snapshot told: dots for hits, arcs for echoes, small dots for beams that met nothing, a zone
 * with something in it filled.
 */
cv::Mat drawSession(const std::vector<Math::Pose2D>& way, const session::Snapshot& snapshot);

}  // namespace QV::outlets
