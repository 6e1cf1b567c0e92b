// The second step of a cast.
#if defined(QV_PLATFORM_NAVIGATION_FAN_CAST_AIM_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QV_PLATFORM_NAVIGATION_FAN_CAST_AIM_INL_H
#undef QV_PLATFORM_NAVIGATION_FAN_CAST_AIM_INL_H
#else
#define QV_PLATFORM_NAVIGATION_FAN_CAST_AIM_INL_H
#endif

#include <cstddef>
#include <cstdint>

#include <hwy/highway.h>

#include "platform/navigation/internal/fan_cast.h"
#include "platform/navigation/internal/fan_cast/frames-inl.h"
#include "platform/navigation/internal/fan_cast/rays-inl.h"
#include "platform/navigation/internal/fan_cast/sectors-inl.h"
#include "platform/navigation/internal/grid_ray.h"
#include "platform/navigation/internal/strip_image.h"

HWY_BEFORE_NAMESPACE();
namespace QV::detail {
namespace HWY_NAMESPACE {
namespace {

// Any steeper, and the line with its slack could leave the block.
constexpr Height kSteepest = (Height{1} << GridRay::kFractionBits) - (Height{4} << kDroppedBits);

/** Stores lines in fixed point, for the walk and to settle it. */
HWY_INLINE void storeLines(const Sectors& sectors, hn::Vec<Doubles> exit, hn::Vec<Doubles> rise,
                           hn::Vec<Doubles> low, int i, Rays& rays) {
#if HWY_TARGET <= HWY_AVX3
  const Heights d;
  const auto wholeRise = hn::Vec<Heights>{_mm512_cvttpd_epi64(rise.raw)};
  const auto perStrip = hn::ShiftLeft<StripImage::kStripBits>(wholeRise);
  const auto backwards = hn::VecFromMask(d, hn::RebindMask(d, maskOf(sectors.acrossReversed >> i)));
  const auto slack = hn::Set(d, Height{kSlack} << kDroppedBits);
  const auto more = hn::ShiftRight<GridRay::kFractionBits>(hn::Add(perStrip, slack));
  hn::Store(hn::Vec<Heights>{_mm512_cvttpd_epi64(exit.raw)}, d, rays.exit + i);
  hn::Store(wholeRise, d, rays.rise + i);
  hn::Store(hn::Vec<Heights>{_mm512_cvttpd_epi64(low.raw)}, d, rays.low + i);
  hn::Store(hn::Sub(hn::Xor(perStrip, backwards), backwards), d, rays.advance + i);
  hn::Store(hn::Sub(hn::Shl(hn::Set(d, 4), more), hn::Set(d, 1)), d, rays.rows + i);
#else
  // One by one: what these machines have for vectors takes longer.
  constexpr std::size_t kLanes = hn::MaxLanes(Doubles());
  alignas(64) double values[3][kLanes];
  // Lanes behind the last ray may hold what is no number; a ray rises by one cell a column at most.
  const auto bounded = [](auto value, double most) {
    return hn::Min(value, hn::Set(Doubles(), most));
  };
  hn::Store(bounded(exit, 0x1p58), Doubles(), values[0]);
  hn::Store(bounded(rise, kOne), Doubles(), values[1]);
  hn::Store(bounded(low, 0x1p58), Doubles(), values[2]);
  for (std::size_t k = 0; k < kLanes; ++k, ++i) {
    const auto wholeRise = static_cast<Height>(values[1][k]);
    const Height perStrip = kStrip * wholeRise;
    const Height backwards = -static_cast<Height>(sectors.acrossReversed >> i & 1);
    rays.exit[i] = static_cast<Height>(values[0][k]);
    rays.rise[i] = wholeRise;
    rays.low[i] = static_cast<Height>(values[2][k]);
    rays.advance[i] = (perStrip ^ backwards) - backwards;
    rays.rows[i] = (Height{4} << GridRay::rowFrom(perStrip + (Height{kSlack} << kDroppedBits))) - 1;
  }
#endif
}

// The operations of aimRay in their order, so that the lines are the same to the last bit; but low
// may be off by much less than the margin.
void aim(const FanCast& fan, const Sides& sides, const Sectors& sectors, int count, Rays& rays) {
  const Doubles d;
  const hn::Rebind<std::int32_t, Doubles> d32;
  const auto one = hn::Set(d, 1.0);
  const auto whole = hn::Set(d, kOne);
  const auto reach = hn::Set(d, fan.reach);
  const bool mayLeave = fan.mayLeave();
  Frames frames(fan, sides);
  for (int i = 0; i < count; i += static_cast<int>(hn::Lanes(d))) {
    if (i == 0 || sectors.changeAround(i, static_cast<int>(hn::Lanes(d)))) frames.find(sectors, i);
    const auto alongPart = hn::Load(d, rays.alongPart + i);
    const auto slope = hn::Div(hn::Load(d, rays.acrossPart + i), alongPart);
    auto reached = hn::Add(frames.along, hn::Mul(reach, alongPart));
    if (mayLeave) reached = hn::Min(reached, frames.findTop(slope));
    const auto farthest = hn::Min(frames.lastColumn, hn::Add(reached, one));
    const auto exit = hn::Mul(hn::Add(frames.across, hn::Mul(frames.toExit, slope)), whole);
    const auto rise = hn::Mul(slope, whole);
    const auto tooSteep = hn::Gt(rise, hn::Set(d, static_cast<double>(kSteepest)));
    const auto last = hn::IfThenElse(tooSteep, frames.first, farthest);
    const auto toLow = hn::Add(exit, hn::Mul(frames.toLowEnd, rise));
    const auto low =
        hn::Add(frames.floor, hn::IfThenElse(frames.acrossBack, hn::Neg(toLow), toLow));
    const auto lastWhole = hn::Trunc(last);
    const auto turnedLast =
        hn::IfThenElse(frames.alongBack, hn::Sub(frames.lastColumn, lastWhole), lastWhole);
    hn::Store(frames.along, d, rays.along + i);
    hn::Store(frames.across, d, rays.across + i);
    hn::Store(hn::Div(one, alongPart), d, rays.perColumn + i);
    hn::Store(last, d, rays.last + i);
    hn::Store(hn::IfThenElse(tooSteep, hn::Set(d, kDoubtful), hn::Set(d, kNever)), d,
              rays.otherwise + i);
    storeLines(sectors, exit, rise, low, i, rays);
    hn::Store(hn::ShiftRight<StripImage::kStripBits>(hn::DemoteTo(d32, turnedLast)), d32,
              rays.lastStrip + i);
    hn::Store(hn::Zero(d32), d32, rays.column + i);
    hn::Store(hn::Zero(d32), d32, rays.word + i);
  }
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace QV::detail
HWY_AFTER_NAMESPACE();

#endif
