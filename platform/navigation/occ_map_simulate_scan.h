#pragma once

#include <vector>

#include "platform/api.h"
#include "platform/math/pose2d.h"
#include "platform/math/sensor_field_of_view_2d.h"
#include "platform/navigation/occupancy_map.h"
#include "platform/navigation/range_reading.h"

namespace QV {

/**
 * Casts a fan of rays from `scanPose` (world frame) into `map`; `readings` is replaced by one
 * reading per ray, from the right edge to the left. A ray ends where it enters the first cell whose
 * occupancy is above `occupiedAbove`; nearer than minRange reads as minRange, beyond maxRange or
 * out of the map is a miss at maxRange. A full turn spreads its rays evenly from -pi; a single ray
 * looks straight ahead. A field of view that makes no sense (NaN, minRange above maxRange, a count
 * outside 1..100,000) gives no reading; a pose that is not finite gives misses.
 */
QV_API void occMapSimulateScan(const OccupancyMap& map,
                               const Math::SensorFieldOfView2D& fieldOfView,
                               const Math::Pose2D& scanPose, std::vector<RangeReading>& readings,
                               float occupiedAbove);

}  // namespace QV
