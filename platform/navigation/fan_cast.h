#pragma once

#include "platform/navigation/grid_frame.h"
#include "platform/navigation/scan_path.h"
#include "platform/navigation/scan_store.h"

namespace QV::detail {

/** Rays from one start inside a map. Lengths are in cells. */
struct FanCast {
  const ScanStore* store;
  int width;
  int height;
  GridPoint start;
  double cosHeading;
  double sinHeading;
  double reach;
};

/**
 * Casts rays in the directions of up to kMostRays unit vectors, given about the heading, and
 * answers how far each goes until it enters a cell of the store: infinity when it meets none, or
 * none within reach; NaN where only walkStrips can tell. Reads and writes whole vectors, up to
 * kMostRays values.
 */
constexpr int kMostRays = 128;
typedef void CastRays(const FanCast& fan, const double* cosines, const double* sines, int count,
                      double* ways);

/** Null when this machine can't, or gains nothing by it. */
CastRays* findCastRays(ScanPath path);

}  // namespace QV::detail
