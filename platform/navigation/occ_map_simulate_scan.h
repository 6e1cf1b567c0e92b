#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "platform/api.h"
#include "platform/math/pose2d.h"
#include "platform/math/sensor_field_of_view_2d.h"
#include "platform/navigation/occupancy_map.h"

namespace QV {

/** The answer of one ray of a scan. */
struct QV_API RangeReading {
  /** The distance along the ray, metres; maxRange for a miss. */
  float range = 0.0f;
  /**
   * The ray's angle in radians, relative to the heading of the pose that the scan was cast from.
   */
  float angle = 0.0f;
  /** 0: hit, 1: miss. An int, as the interface requires. */
  std::int32_t status = 0;

  friend bool operator==(const RangeReading&, const RangeReading&) = default;
};

/**
 * Casts a fan of rays from `scanPose` into `map`; `readings` is replaced by one reading per ray,
 * from the right edge to the left.
 * - Frames: `scanPose` is in the map frame M; angles are relative to its heading.
 * - Units: metres, radians.
 * - Special values: a ray ends where it enters the first cell whose occupancy is above
 *   `occupiedAbove`. A range below minRange is returned as minRange. Beyond maxRange, or out of the
 *   map, it is a miss at maxRange. A full turn spreads its rays evenly over [-pi, pi); a single ray
 *   looks straight ahead.
 * - Threads: thread-safe, as long as nobody writes the map.
 * - Errors: an invalid field of view (NaN, minRange above maxRange, a count outside 1..100,000)
 *   gives no reading; a pose that is not finite gives misses.
 *
 * A scan of a full turn:
 *
 *     std::vector<QV::RangeReading> readings;
 *     QV::occMapSimulateScan(*map, {0.0f, 5.0f, 6.28f, 360}, {3.0f, 6.3f, 0.0f}, readings,
 *                            QV::OccupancyMap::kSolidAbove);
 */
QV_API void occMapSimulateScan(const OccupancyMap& map,
                               const Math::SensorFieldOfView2D& fieldOfView,
                               const Math::Pose2D& scanPose, std::vector<RangeReading>& readings,
                               float occupiedAbove);

/**
 * Casts one fan of rays from each of many poses (map frame) into `map`, for example for a particle
 * filter. Writes the ranges of occMapSimulateScan (m) to `ranges`, pose by pose; a miss is
 * maxRange. Up to `threads` threads share the poses, the caller's among them, but not more than the
 * machine has processors. Throws std::invalid_argument, and writes nothing, for an invalid field of
 * view, if ranges.size() is not poses * rays, or if threads are not 1..256.
 */
QV_API void occMapSimulateScans(const OccupancyMap& map, std::span<const Math::Pose2D> poses,
                                const Math::SensorFieldOfView2D& fieldOfView,
                                std::span<float> ranges, float occupiedAbove, int threads = 1);

}  // namespace QV
