#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "platform/math/pose2d.h"
#include "platform/math/sensor_field_of_view_2d.h"
#include "platform/navigation/occ_map_simulate_scan.h"
#include "platform/navigation/occupancy_map.h"

namespace QV::test {

/**
 * A ray through a map that is looked at point by point: slow, and independent of the scan. It can
 * miss a cell whose corner the ray cuts between two samples, and never sees one that isn't there.
 */
class SampledRay {
 public:
  SampledRay(const OccupancyMap& map, const Math::Pose2D& pose, double angle, float occupiedAbove)
      : map(map),
        pose(pose),
        cosDirection(std::cos(pose.theta + angle)),
        sinDirection(std::sin(pose.theta + angle)),
        cosYaw(std::cos(double{map.getOrigin().theta})),
        sinYaw(std::sin(double{map.getOrigin().theta})),
        occupiedAbove(occupiedAbove) {}

  /** True if the point at `range` metres lies in a cell that stops the ray. */
  bool isStoppedAt(double range) const {
    const double x = pose.x + range * cosDirection - map.getOrigin().x;
    const double y = pose.y + range * sinDirection - map.getOrigin().y;
    const double column = std::floor((cosYaw * x + sinYaw * y) / map.getResolution());
    const double row = std::floor((cosYaw * y - sinYaw * x) / map.getResolution());
    if (column < 0 || column >= map.getWidth() || row < 0 || row >= map.getHeight()) return false;
    return map.getOccupancy(static_cast<int>(column), static_cast<int>(row)) > occupiedAbove;
  }

  /** Metres to the first sample that is stopped, up to `maxRange`; infinity when none is. */
  double findRange(double maxRange, double step) const {
    for (int i = 0; i * step <= maxRange; ++i) {
      if (isStoppedAt(i * step)) return i * step;
    }
    return std::numeric_limits<double>::infinity();
  }

  /** True if the ray lies in a stopping cell within `step` of `range`, however small the corner. */
  bool isStoppedNear(double range, double step) const {
    for (double way = step; way > 1e-8; way *= 0.7) {
      if (isStoppedAt(range + way) || isStoppedAt(range - way)) return true;
    }
    return isStoppedAt(range);
  }

 private:
  const OccupancyMap& map;
  Math::Pose2D pose;
  double cosDirection;
  double sinDirection;
  double cosYaw;
  double sinYaw;
  float occupiedAbove;
};

/**
 * Holds when a reading of a scan from `pose` is what samples every `step` metres show: a hit is
 * one, to within two samples, and nothing stops the ray before it.
 */
inline testing::AssertionResult agreesWithSamples(const RangeReading& reading,
                                                  const OccupancyMap& map,
                                                  const Math::SensorFieldOfView2D& fieldOfView,
                                                  const Math::Pose2D& pose, float occupiedAbove,
                                                  double step) {
  const SampledRay ray(map, pose, reading.angle, occupiedAbove);
  const double sampled = ray.findRange(fieldOfView.maxRange, step);
  const auto failure = [&] {
    return testing::AssertionFailure()
           << "pose " << pose.x << ", " << pose.y << ", " << pose.theta << ", angle "
           << reading.angle << ": range " << reading.range << ", status " << reading.status
           << ", sampled " << sampled << ": ";
  };
  if (reading.status != 0) {
    if (reading.range != fieldOfView.maxRange) return failure() << "a miss not at maxRange";
    if (sampled < fieldOfView.maxRange - step) return failure() << "an obstacle missed";
    return testing::AssertionSuccess();
  }
  if (reading.range < fieldOfView.minRange || reading.range > fieldOfView.maxRange) {
    return failure() << "a hit out of limits";
  }
  const double clamped = std::max<double>(sampled, fieldOfView.minRange);
  if (reading.range > clamped + 2e-6 * (1.0 + clamped)) return failure() << "too far";
  if (clamped - reading.range <= 2.0 * step) return testing::AssertionSuccess();
  if (ray.isStoppedNear(reading.range, step)) return testing::AssertionSuccess();
  const bool nearer = reading.range == fieldOfView.minRange &&
                      std::isfinite(ray.findRange(fieldOfView.minRange, 0.01 * step));
  return nearer ? testing::AssertionSuccess() : failure() << "no obstacle there";
}

}  // namespace QV::test
