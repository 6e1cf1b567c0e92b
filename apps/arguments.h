#pragma once

#include <string>
#include <vector>

#include "platform/math/pose2d.h"
#include "platform/navigation/occupancy_map.h"

namespace QV::app {

/** "x,y" in metres; UsageError for anything else. */
MapShift parseShift(const std::string& text);

/**
 * "x,y,theta" in metres and radians, in the coordinates of the map's file; UsageError for anything
 * else. Returns the pose in a map that is held shifted so.
 */
Math::Pose2D parsePose(const std::string& text, const MapShift& shift = {});

/** The same for "x,y x,y ...", at least two different positions in metres. */
std::vector<Math::Position2D> parsePath(const std::string& text, const MapShift& shift = {});

}  // namespace QV::app
