#pragma once

#include <span>

#include "platform/api.h"
#include "platform/math/pose2d.h"
#include "platform/math/sensor_field_of_view_2d.h"
#include "platform/navigation/occupancy_map.h"

namespace QV {

/**
 * Casts one fan of rays from each of many poses (world frame) into `map`, as a particle filter
 * does. `ranges` gets the ranges that occMapSimulateScan reads, in metres, all rays of the first
 * pose, then all of the second, and so on; a ray that meets nothing reads as maxRange. So many
 * `threads` share the poses, the caller's among them. Throws std::invalid_argument where the field
 * of view makes no sense, `ranges` has not one place for each ray of each pose, or threads are not
 * 1..256; nothing is written then.
 */
QV_API void occMapSimulateScans(const OccupancyMap& map, std::span<const Math::Pose2D> poses,
                                const Math::SensorFieldOfView2D& fieldOfView,
                                std::span<float> ranges, float occupiedAbove, int threads = 1);

}  // namespace QV
