#pragma once

#include <algorithm>
#include <limits>

#include "platform/math/sensor_field_of_view_2d.h"
#include "platform/navigation/internal/grid_frame.h"
#include "platform/navigation/internal/scan_path.h"
#include "platform/navigation/internal/scan_store.h"
#include "platform/navigation/occ_map_simulate_scan.h"

namespace QV::detail {

/** The start of a fan's rays. Lengths are in cells. */
struct FanCast {
  const ScanStore* store;
  int width;
  int height;
  GridPoint start;
  double cosHeading;
  double sinHeading;
  double reach;

  /** The most rays that are cast at a time; buffers hold kMore values after them. */
  static constexpr int kMostRays = 64;
  static constexpr int kMore = 8;

  /** True if the start is well inside the map: only there can these rays be cast together. */
  bool startsInside() const {
    constexpr double kMargin = 1e-6;
    return start.x > kMargin && start.x < width - kMargin && start.y > kMargin &&
           start.y < height - kMargin;
  }
  /** False if no ray gets as far as the map's edges. */
  bool mayLeave() const {
    return std::min(std::min(start.x, width - start.x), std::min(start.y, height - start.y)) <=
           reach + 1.0;
  }
};

/**
 * Casts `count` rays from a start inside the map in directions that are given about the heading, as
 * unit vectors, each turned on from the one before by the same way round; and tells how far each
 * goes until it enters a cell of the store: the way that walkPlainly finds for the ray that aimRay
 * makes, to the last bit; NaN for the few rays that only they can settle, and true if there may be
 * any. What it writes into the kMore values at the end of `ways` means nothing.
 */
using CastRays = bool(const FanCast& fan, const double* cosines, const double* sines, int count,
                      double* ways);

/** The limits of ranges in metres; the resolution in metres a cell. */
struct RangeLimits {
  RangeLimits(const Math::SensorFieldOfView2D& fieldOfView, float resolution)
      : resolution(resolution),
        minRange(fieldOfView.minRange),
        maxRange(fieldOfView.maxRange),
        farthest(std::min(maxRange, std::numeric_limits<float>::max())) {}

  double resolution;
  float minRange;
  float maxRange;
  /** The farthest that counts: what goes farther misses, also what goes on for ever. */
  float farthest;
};

/** Readings, or bare ranges, of `count` rays that go these ways, in cells. */
using ToReadings = void(const double* ways, const float* angles, int count,
                        const RangeLimits& limits, RangeReading* readings);
using ToRanges = void(const double* ways, int count, const RangeLimits& limits, float* ranges);

/** The steps of a scan as a path takes them. */
struct ScanSteps {
  /** Null for the plain path and for what this machine hasn't. */
  CastRays* castRays;
  ToReadings* toReadings;
  ToRanges* toRanges;
};

QV_API ScanSteps findScanSteps(ScanPath path);

}  // namespace QV::detail
