#pragma once

#include <cstdint>
#include <vector>

#include "platform/api.h"
#include "platform/math/metrical_data.h"
#include "sensor/core/internal/health_nature.h"
#include "sensor/core/internal/planar_view.h"

namespace QV::sensor {

/** A digest of a reading, of fixed size for any number of points. Trivially copyable. */
struct ReadingDigest {
  /** A hash of the points; 0 if nobody asks whether they change. */
  std::uint64_t fingerprint = 0;
  /** True if the reading has no points. */
  bool isBlank = true;
  /** True if a sound sensor can't have measured this. */
  bool isGarbage = false;
  /** True if the reading has an obstacle, which moves when the robot turns. */
  bool hasObstacle = false;
  /** True if the reading has an obstacle straight ahead, which comes nearer when the robot drives
   * there. */
  bool hasObstacleAhead = false;
};

/**
 * Reads about a hundred points and allocates no memory. Sets `view` to what the sensor sees.
 * `former` is the shape of the last view.
 */
QV_API ReadingDigest digestOf(const std::vector<Math::MetricalData>& records,
                              const HealthNature& nature, const PlanarView::Shape& former,
                              PlanarView& view);
/** Returns the stamp of the oldest record, ns. */
std::int64_t stampOf(const std::vector<Math::MetricalData>& records);
std::size_t countPoints(const std::vector<Math::MetricalData>& records);

}  // namespace QV::sensor
