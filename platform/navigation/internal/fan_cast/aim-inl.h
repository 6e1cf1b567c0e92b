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

/**
 * Numbers as whole ones, cut towards zero: up to 2^62, small ones up to 2^51. What is beyond, or no
 * number, becomes any.
 */
template <bool kSmall = false>
HWY_INLINE hn::Vec<Heights> toWhole(hn::Vec<Doubles> number) {
#if HWY_TARGET <= HWY_AVX3
  return hn::Vec<Heights>{_mm512_cvttpd_epi64(number.raw)};
#elif HWY_TARGET == HWY_SCALAR
  return hn::Vec<Heights>(static_cast<Height>(number.raw));
#else
  // Added to this base, a whole number stands in the low bits of the sum.
  const Doubles d;
  const Heights dWhole;
  const auto base = hn::Set(d, 0x1.8p52);
  const auto baseBits = hn::BitCast(dWhole, base);
  if constexpr (kSmall) {
    return hn::Sub(hn::BitCast(dWhole, hn::Add(hn::Trunc(number), base)), baseBits);
  }
  const auto high = hn::Trunc(hn::Mul(number, hn::Set(d, 0x1p-32)));
  const auto low = hn::Sub(number, hn::Mul(high, hn::Set(d, 0x1p32)));
  // The bits of the base leave at the top.
  const auto highBits = hn::ShiftLeft<32>(hn::BitCast(dWhole, hn::Add(high, base)));
  return hn::Add(highBits, toWhole<true>(low));
#endif
}

/** Stores lines in fixed point, for the walk and to settle it. */
HWY_INLINE void storeLines(const Sectors& sectors, hn::Vec<Doubles> exit, hn::Vec<Doubles> rise,
                           hn::Vec<Doubles> low, int i, Rays& rays) {
  const Heights d;
  const Bits dBits;
  const auto wholeRise = toWhole<true>(rise);
  const auto perStrip = hn::ShiftLeft<StripImage::kStripBits>(wholeRise);
  const auto backwards = hn::VecFromMask(d, hn::RebindMask(d, maskOf(sectors.acrossReversed >> i)));
  const auto slack = hn::Set(d, Height{kSlack} << kDroppedBits);
  // Without a sign, which AVX2 cannot shift.
  const auto more = hn::BitCast(
      d, hn::ShiftRight<GridRay::kFractionBits>(hn::BitCast(dBits, hn::Add(perStrip, slack))));
  hn::Store(toWhole(exit), d, rays.exit + i);
  hn::Store(wholeRise, d, rays.rise + i);
  hn::Store(toWhole(low), d, rays.low + i);
  hn::Store(hn::Sub(hn::Xor(perStrip, backwards), backwards), d, rays.advance + i);
  hn::Store(hn::Sub(hn::Shl(hn::Set(d, 4), more), hn::Set(d, 1)), d, rays.rows + i);
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
