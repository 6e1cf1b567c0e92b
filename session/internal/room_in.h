#pragma once

#include <opencv2/core.hpp>

#include "platform/api.h"
#include "platform/navigation/occupancy_map.h"

namespace QV::session {

/**
 * The distances from the cells of an area to the nearest that is not free, metres, up to `most`.
 * No cell beyond the map is free.
 */
QV_API cv::Mat_<float> roomIn(const OccupancyMap& map, const cv::Rect& area, float most);

}  // namespace QV::session
