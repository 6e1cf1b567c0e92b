#include "platform/navigation/internal/fan_cast.h"

#include <cstdint>

#include "platform/navigation/internal/fan_sector.h"

// Vectors without a fixed size can be no members; such machines have others as well.
#define HWY_DISABLED_TARGETS (HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128 | HWY_RVV)
#define HWY_TARGET_INCLUDE "platform/navigation/internal/fan_cast.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "platform/navigation/internal/fan_cast/aim-inl.h"
#include "platform/navigation/internal/fan_cast/frames-inl.h"
#include "platform/navigation/internal/fan_cast/measure-inl.h"
#include "platform/navigation/internal/fan_cast/rays-inl.h"
#include "platform/navigation/internal/fan_cast/sectors-inl.h"
#include "platform/navigation/internal/fan_cast/settle-inl.h"
#include "platform/navigation/internal/fan_cast/walk-inl.h"

HWY_BEFORE_NAMESPACE();
namespace QV::detail {
namespace HWY_NAMESPACE {
namespace {

/** Calls `visit` with each sector and its rays. */
template <typename Visit>
HWY_INLINE void forEachSector(const FanCast& fan, const Sectors& sectors, int count, Visit visit) {
  std::uint64_t lasts = sectors.findLasts(count);
  for (int begin = 0; begin < count; lasts &= lasts - 1) {
    const int end = static_cast<int>(hwy::Num0BitsBelowLS1Bit_Nonzero64(lasts)) + 1;
    visit(FanSector(fan, sectors.of(begin)), begin, end);
    begin = end;
  }
}

bool castRays(const FanCast& fan, const double* cosines, const double* sines, int count,
              double* ways) {
  Rays rays;
  const Sides sides(fan);
  const Sectors sectors = turn(fan, cosines, sines, count, rays);
  aim(fan, sides, sectors, count, rays);
  bool isStartUsed = false;
  forEachSector(fan, sectors, count, [&](const FanSector& sector, int begin, int end) {
    if (sector.alongReversed) {
      walk<true>(sector, sides.of(sector), begin, end, rays);
    } else {
      walk<false>(sector, sides.of(sector), begin, end, rays);
    }
    isStartUsed |= isFirstColumnUsed(sector);
  });
  const bool isDoubtful = settle(sectors, rays, count, ways);
  if (isStartUsed) {
    forEachSector(fan, sectors, count, [&](const FanSector& sector, int begin, int end) {
      checkFirstColumn(sector, begin, end, rays, ways);
    });
  }
  return isDoubtful;
}

}  // namespace

ScanSteps getSteps() {
  return {castRays, toReadings, toRanges};
}

}  // namespace HWY_NAMESPACE
}  // namespace QV::detail
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace QV::detail {
namespace {

HWY_EXPORT(getSteps);

// Asking the processor costs as much as some rays.
bool hasTarget(std::int64_t target) {
  static const std::int64_t supported = hwy::SupportedTargets();
  return (supported & target) != 0;
}

ScanSteps withoutVectors() {
  return HWY_STATIC_DISPATCH(getSteps)();
}

/**
 * The steps of a path that casts no rays together: the plain one, and those that this machine
 * lacks.
 */
ScanSteps withoutCast() {
  ScanSteps steps = withoutVectors();
  steps.castRays = nullptr;
  return steps;
}

ScanSteps findSse4() {
#if HWY_TARGETS & HWY_SSE4
  if (hasTarget(HWY_SSE4)) return N_SSE4::getSteps();
#endif
  return withoutCast();
}

ScanSteps findAvx2() {
#if HWY_TARGETS & HWY_AVX2
  if (hasTarget(HWY_AVX2)) return N_AVX2::getSteps();
#endif
  return withoutCast();
}

}  // namespace

ScanSteps findScanSteps(ScanPath path) {
  switch (path) {
    case ScanPath::best:
      return HWY_DYNAMIC_DISPATCH(getSteps)();
    case ScanPath::scalar:
      return withoutVectors();
    case ScanPath::sse4:
      return findSse4();
    case ScanPath::avx2:
      return findAvx2();
    case ScanPath::plain:
      break;
  }
  return withoutCast();
}

}  // namespace QV::detail

#endif  // HWY_ONCE
