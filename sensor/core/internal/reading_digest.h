#pragma once

#include <cstdint>
#include <vector>

#include "platform/math/metrical_data.h"
#include "sensor/core/internal/health_nature.h"
#include "sensor/core/internal/planar_view.h"

namespace QV::sensor {

/** A digest of a reading, however many points that has. Trivially copyable. */
struct ReadingDigest {
  /** The same for the same points; 0 where nobody asks whether they change. */
  std::uint64_t fingerprint = 0;
  /** The stamp of the oldest record, ns. */
  std::int64_t stamp = 0;
  /** True if a sound sensor can't have measured this. */
  bool isGarbage = false;
  /** True if there is an obstacle in it, which a turn moves. */
  bool hasObstacle = false;
  /** True if there is one right ahead, which going there brings nearer. */
  bool hasObstacleAhead = false;
};

/**
 * Looks at about a hundred points, and takes no memory; `view` becomes what the sensor sees.
 * `former` is the shape of what it saw before.
 */
ReadingDigest digestOf(const std::vector<Math::MetricalData>& records, const HealthNature& nature,
                       const PlanarView::Shape& former, PlanarView& view);
/** Returns the stamp of the oldest record, ns. */
std::int64_t stampOf(const std::vector<Math::MetricalData>& records);
std::size_t countPoints(const std::vector<Math::MetricalData>& records);

}  // namespace QV::sensor
