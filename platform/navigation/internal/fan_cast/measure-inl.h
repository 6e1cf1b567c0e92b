// Turns the rays' distances in cells into the answers of a scan.
#if defined(QV_PLATFORM_NAVIGATION_FAN_CAST_MEASURE_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QV_PLATFORM_NAVIGATION_FAN_CAST_MEASURE_INL_H
#undef QV_PLATFORM_NAVIGATION_FAN_CAST_MEASURE_INL_H
#else
#define QV_PLATFORM_NAVIGATION_FAN_CAST_MEASURE_INL_H
#endif

#include <cstdint>

#include <hwy/highway.h>

#include "platform/navigation/internal/fan_cast.h"
#include "platform/navigation/internal/fan_cast/rays-inl.h"

HWY_BEFORE_NAMESPACE();
namespace QV::detail {
namespace HWY_NAMESPACE {
namespace {

using Floats = hn::Rebind<float, Doubles>;

/** A ray's range, and whether it misses. */
struct Measured {
  float range;
  bool misses;
};

Measured measureOne(double way, const RangeLimits& limits) {
  const auto range = static_cast<float>(way * limits.resolution);
  const bool misses = range > limits.farthest;
  return {misses ? limits.maxRange : range < limits.minRange ? limits.minRange : range, misses};
}

/** The ranges of as many rays as a vector has doubles. */
struct MeasuredVector {
  HWY_INLINE MeasuredVector(const double* ways, const RangeLimits& limits) {
    const Floats d;
    const Doubles dWay;
    const auto metres = hn::Mul(hn::LoadU(dWay, ways), hn::Set(dWay, limits.resolution));
    const auto way = hn::DemoteTo(d, metres);
    const auto least = hn::Set(d, limits.minRange);
    misses = hn::Gt(way, hn::Set(d, limits.farthest));
    range = hn::IfThenElse(hn::Lt(way, least), least, way);
    range = hn::IfThenElse(misses, hn::Set(d, limits.maxRange), range);
  }

  hn::Vec<Floats> range;
  hn::Mask<Floats> misses;
};

constexpr int kLanes = static_cast<int>(hn::MaxLanes(Doubles()));
// Fewer lanes gain nothing.
constexpr bool kByVectors = kLanes >= 4;

void toReadings(const double* ways, const float* angles, int count, const RangeLimits& limits,
                RangeReading* readings) {
  int i = 0;
#if HWY_TARGET != HWY_SCALAR
  const Floats d;
  const hn::RebindToUnsigned<Floats> dBits;
  const auto missed = hn::BitCast(d, hn::Set(dBits, 1));
  static_assert(sizeof(RangeReading) == 3 * sizeof(float), "range, angle, status");
  for (; kByVectors && i + kLanes <= count; i += kLanes) {
    const MeasuredVector measured(ways + i, limits);
    hn::StoreInterleaved3(measured.range, hn::LoadU(d, angles + i),
                          hn::IfThenElseZero(measured.misses, missed), d,
                          reinterpret_cast<float*>(readings + i));
  }
#endif
  for (; i < count; ++i) {
    const Measured measured = measureOne(ways[i], limits);
    readings[i] = {measured.range, angles[i], measured.misses};
  }
}

void toRanges(const double* ways, int count, const RangeLimits& limits, float* ranges) {
  int i = 0;
  for (; kByVectors && i + kLanes <= count; i += kLanes) {
    hn::StoreU(MeasuredVector(ways + i, limits).range, Floats(), ranges + i);
  }
  for (; i < count; ++i) ranges[i] = measureOne(ways[i], limits).range;
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace QV::detail
HWY_AFTER_NAMESPACE();

#endif
