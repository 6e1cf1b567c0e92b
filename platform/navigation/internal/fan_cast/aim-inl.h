// The first step of a cast.
#if defined(QV_PLATFORM_NAVIGATION_FAN_CAST_AIM_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QV_PLATFORM_NAVIGATION_FAN_CAST_AIM_INL_H
#undef QV_PLATFORM_NAVIGATION_FAN_CAST_AIM_INL_H
#else
#define QV_PLATFORM_NAVIGATION_FAN_CAST_AIM_INL_H
#endif

#include <bit>
#include <cstdint>

#include <hwy/highway.h>

#include "platform/navigation/internal/fan_cast.h"
#include "platform/navigation/internal/fan_cast/rays-inl.h"
#include "platform/navigation/internal/fan_sector.h"
#include "platform/navigation/internal/grid_ray.h"
#include "platform/navigation/internal/strip_image.h"

HWY_BEFORE_NAMESPACE();
namespace QV::detail {
namespace HWY_NAMESPACE {
namespace {

/** The flag where a value is below zero. */
template <int kFlag>
HWY_INLINE hn::Vec<Bits> flagNegative(hn::Vec<Doubles> value) {
  const Bits d;
  // Negative zero plus zero has no sign.
  const auto bits = hn::BitCast(d, hn::Add(value, hn::Zero(Doubles())));
  constexpr int kToFlag = 63 - std::countr_zero(static_cast<unsigned>(kFlag));
  return hn::And(hn::ShiftRight<kToFlag>(bits), hn::Set(d, kFlag));
}

/** Turns the directions by the heading, and sorts them into sectors. */
void turn(const FanCast& fan, const double* cosines, const double* sines, int count, Rays& rays) {
  const Doubles d;
  const Bits dBits;
  const auto cosHeading = hn::Set(d, fan.cosHeading);
  const auto sinHeading = hn::Set(d, fan.sinHeading);
  for (int i = 0; i < count; i += static_cast<int>(hn::Lanes(d))) {
    const auto cosine = hn::LoadU(d, cosines + i);
    const auto sine = hn::LoadU(d, sines + i);
    const auto x = hn::Sub(hn::Mul(cosine, cosHeading), hn::Mul(sine, sinHeading));
    const auto y = hn::Add(hn::Mul(sine, cosHeading), hn::Mul(cosine, sinHeading));
    const auto steep = hn::Gt(hn::Abs(y), hn::Abs(x));
    const auto isSteep = hn::BitCast(dBits, hn::VecFromMask(d, steep));
    const auto sector =
        hn::Or(hn::And(isSteep, hn::Set(dBits, FanSector::kSteep)),
               hn::Or(flagNegative<FanSector::kAlongReversed>(hn::IfThenElse(steep, y, x)),
                      flagNegative<FanSector::kAcrossReversed>(hn::IfThenElse(steep, x, y))));
    hn::Store(x, d, rays.x + i);
    hn::Store(y, d, rays.y + i);
    hn::Store(sector, dBits, rays.sector + i);
  }
}

/** Bit i is set when ray i is the last of those in its sector. */
std::uint64_t findLasts(const Rays& rays, int count) {
  const Bits d;
  std::uint64_t lasts = 0;
  for (int i = 0; i < count; i += static_cast<int>(hn::Lanes(d))) {
    const auto isLast = hn::Ne(hn::LoadU(d, rays.sector + i), hn::LoadU(d, rays.sector + i + 1));
    std::uint8_t bits = 0;
    hn::StoreMaskBits(d, isLast, &bits);
    lasts |= std::uint64_t{bits} << i;
  }
  return lasts | std::uint64_t{1} << (count - 1);
}

// Any steeper, and the line with its slack could leave the block.
constexpr Height kSteepest = (Height{1} << GridRay::kFractionBits) - (Height{4} << kDroppedBits);

/** The lines of a sector's rays over the first strip, where all of them start. */
struct Approach {
  explicit Approach(const FanSector& sector)
      : from(sector.turnColumn(sector.first)),
        firstStrip(from / kStrip),
        floor((sector.acrossReversed ? sector.rows * kOne : 0.0) - kMargin) {
    const int nearEdge =
        sector.alongReversed ? sector.columns - kStrip * (firstStrip + 1) : kStrip * firstStrip;
    toLowEnd = nearEdge + (sector.acrossReversed ? kStrip : 0) - sector.first - 1;
  }

  static constexpr double kMargin = Height{1} << kDroppedBits;

  int from;
  int firstStrip;
  /** The height of the image's lowest row, and a little less. */
  double floor;
  /** The distance in rises from where a ray leaves its first column to its low end over the
   * strip. */
  double toLowEnd;
};

/** Returns how far along the columns rays get; they may end at the grid's top. */
HWY_INLINE hn::Vec<Doubles> reachAlong(const FanCast& fan, const FanSector& sector,
                                       hn::Vec<Doubles> alongPart, hn::Vec<Doubles> slope) {
  const Doubles d;
  const auto along = hn::Set(d, sector.along);
  const double rowsAbove = sector.rows - sector.across;
  const auto reached = hn::Add(along, hn::Mul(hn::Set(d, fan.reach), alongPart));
  if (fan.reach + 1.0 < rowsAbove) return reached;
  return hn::Min(reached, hn::Add(along, hn::Div(hn::Set(d, rowsAbove), slope)));
}

// The operations of aimRay in their order, so that the lines are the same to the last bit; but low
// may be off by much less than the margin.
void aim(const FanCast& fan, const FanSector& sector, const Approach& approach, int begin, int end,
         Rays& rays) {
  const Doubles d;
  const hn::Rebind<std::int32_t, Doubles> d32;
  const auto one = hn::Set(d, 1.0);
  const auto across = hn::Set(d, sector.across);
  const auto lastColumn = hn::Set(d, sector.columns - 1);
  const auto toExit = hn::Set(d, sector.first + 1 - sector.along);
  const double* const alongParts = sector.steep ? rays.y : rays.x;
  const double* const acrossParts = sector.steep ? rays.x : rays.y;
  for (int i = begin; i < end; i += static_cast<int>(hn::Lanes(d))) {
    const auto alongPart = hn::Abs(hn::LoadU(d, alongParts + i));
    const auto acrossPart = hn::Abs(hn::LoadU(d, acrossParts + i));
    const auto slope = hn::Div(acrossPart, alongPart);
    const auto reached = reachAlong(fan, sector, alongPart, slope);
    const auto farthest = hn::Min(lastColumn, hn::Add(reached, one));
    const auto exit = hn::Mul(hn::Add(across, hn::Mul(toExit, slope)), hn::Set(d, kOne));
    const auto rise = hn::Mul(slope, hn::Set(d, kOne));
    const auto tooSteep = hn::Gt(rise, hn::Set(d, static_cast<double>(kSteepest)));
    const auto last = hn::IfThenElse(tooSteep, hn::Set(d, sector.first), farthest);
    const auto toLow = hn::Add(exit, hn::Mul(hn::Set(d, approach.toLowEnd), rise));
    const auto low =
        hn::Add(hn::Set(d, approach.floor), hn::Mul(hn::Set(d, sector.rowStep), toLow));
    const auto turnedLast =
        hn::Add(hn::Set(d32, sector.columnBase),
                hn::Mul(hn::Set(d32, sector.columnStep), hn::DemoteTo(d32, last)));
    hn::StoreU(hn::Div(one, alongPart), d, rays.perColumn + i);
    hn::StoreU(acrossPart, d, rays.acrossPart + i);
    hn::StoreU(last, d, rays.last + i);
    hn::StoreU(hn::IfThenElse(tooSteep, hn::Set(d, kDoubtful), hn::Set(d, kNever)), d,
               rays.otherwise + i);
    hn::StoreU(exit, d, rays.exit + i);
    hn::StoreU(rise, d, rays.rise + i);
    hn::StoreU(low, d, rays.low + i);
    hn::StoreU(hn::Set(d, approach.firstStrip), d, rays.firstStrip + i);
    hn::StoreU(hn::ShiftRight<StripImage::kStripBits>(turnedLast), d32, rays.lastStrip + i);
  }
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace QV::detail
HWY_AFTER_NAMESPACE();

#endif
