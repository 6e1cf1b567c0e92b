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
  /** The status: 0 for a hit, 1 for a miss. The interface has a number here. */
  std::int32_t status = 0;

  friend bool operator==(const RangeReading&, const RangeReading&) = default;
};

/**
 * Casts a fan of rays from `scanPose` into `map`; `readings` is replaced by one reading per ray,
 * from the right edge to the left.
 *
 * - Frames: `scanPose` is in the world frame of the map; angles are relative to its heading.
 * - Units: metres, radians.
 * - Reserved: a ray ends where it enters the first cell whose occupancy is above `occupiedAbove`.
 *   Nearer than minRange reads as minRange. Beyond maxRange, or out of the map, it is a miss at
 *   maxRange. A full turn spreads its rays evenly from -pi; a single ray looks straight ahead.
 * - Threads: thread-safe, as long as nobody writes the map.
 * - Errors: a field of view that makes no sense (NaN, minRange above maxRange, a count outside
 *   1..100,000) gives no reading; a pose that is not finite gives misses.
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
 * Casts one fan of rays from each of many poses (world frame) into `map`, as a particle filter
 * does.
 *
 * `ranges` gets the ranges that occMapSimulateScan reads, in metres: all rays of the first pose,
 * then all of the second, and so on. A ray that meets nothing reads as maxRange. Up to `threads`
 * threads share the poses, the caller's among them, but not more than the machine has processors.
 * Throws std::invalid_argument where the field of view makes no sense, `ranges` has not one place
 * for each ray of each pose, or threads are not 1..256; nothing is written then.
 */
QV_API void occMapSimulateScans(const OccupancyMap& map, std::span<const Math::Pose2D> poses,
                                const Math::SensorFieldOfView2D& fieldOfView,
                                std::span<float> ranges, float occupiedAbove, int threads = 1);

}  // namespace QV
