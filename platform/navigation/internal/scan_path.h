#pragma once

#include <vector>

#include "platform/api.h"
#include "platform/math/pose2d.h"
#include "platform/math/sensor_field_of_view_2d.h"
#include "platform/navigation/occ_map_simulate_scan.h"
#include "platform/navigation/occupancy_map.h"

namespace QV::detail {

/** The ways to cast the rays of a scan. All give the same readings, to the last bit. */
enum class ScanPath {
  /** The fastest that this machine has. */
  best,
  /** Cell by cell over the occupancies: the reference. */
  plain,
  /** Casts over the map's bits, ray by ray. */
  scalar,
  /** Casts over the map's bits, sixteen columns at a time, by these SIMD instructions. */
  sse4,
  avx2,
};

/** True if this machine has a path's instructions. */
QV_API bool isSupported(ScanPath path);

/** occMapSimulateScan on a path that is supported. */
QV_API void simulateScan(const OccupancyMap& map, const Math::SensorFieldOfView2D& fieldOfView,
                         const Math::Pose2D& scanPose, std::vector<RangeReading>& readings,
                         float occupiedAbove, ScanPath path);

}  // namespace QV::detail
