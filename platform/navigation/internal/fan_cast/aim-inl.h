// The first step of a cast.
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
#include "platform/navigation/internal/fan_cast/rays-inl.h"
#include "platform/navigation/internal/fan_sector.h"
#include "platform/navigation/internal/grid_ray.h"
#include "platform/navigation/internal/strip_image.h"

HWY_BEFORE_NAMESPACE();
namespace QV::detail {
namespace HWY_NAMESPACE {
namespace {

// Any steeper, and the line with its slack could leave the block.
constexpr Height kSteepest = (Height{1} << GridRay::kFractionBits) - (Height{4} << kDroppedBits);

/** The start of rays that advance one way along an axis of the map. */
struct Side {
  Side(double start, int columns, bool reversed)
      : along(reversed ? columns - start : start), first(static_cast<int>(along)) {
    const int from = reversed ? columns - 1 - first : first;
    firstStrip = from / kStrip;
    toEdge = (reversed ? columns - kStrip * (firstStrip + 1) : kStrip * firstStrip) - first - 1;
    const int place = from % kStrip;
    const std::uint32_t all = (1u << kStrip) - 1;
    ahead = reversed ? (1u << place) - 1 : all & (all << place << 1);
  }

  double along;
  /** The column of the start, and its strip in the image. */
  int first;
  int firstStrip;
  /** The distance from where a ray leaves its first column to the strip's edge before it. */
  double toEdge;
  /** The strip's columns in the image that lie beyond the first one. */
  std::uint32_t ahead;
};

/** All ways, by whether they go back along their axis. */
struct Sides {
  explicit Sides(const FanCast& fan)
      : x{{fan.start.x, fan.width, false}, {fan.start.x, fan.width, true}},
        y{{fan.start.y, fan.height, false}, {fan.start.y, fan.height, true}} {}

  const Side& of(const FanSector& sector) const {
    return (sector.steep ? y : x)[sector.alongReversed];
  }

  Side x[2];
  Side y[2];
};

HWY_INLINE std::uint64_t bitsOf(hn::Mask<Doubles> mask) {
  std::uint8_t bits = 0;
  hn::StoreMaskBits(Doubles(), mask, &bits);
  return bits;
}

HWY_INLINE hn::Mask<Doubles> maskOf(std::uint64_t bits) {
  const auto byte = static_cast<std::uint8_t>(bits);
  return hn::LoadMaskBits(Doubles(), &byte);
}

/** Turns the directions by the heading, and sorts them into sectors. */
Sectors turn(const FanCast& fan, const double* cosines, const double* sines, int count,
             Rays& rays) {
  const Doubles d;
  const auto zero = hn::Zero(d);
  const auto cosHeading = hn::Set(d, fan.cosHeading);
  const auto sinHeading = hn::Set(d, fan.sinHeading);
  Sectors sectors;
  std::uint64_t xBack = 0;
  std::uint64_t yBack = 0;
  for (int i = 0; i < count; i += static_cast<int>(hn::Lanes(d))) {
    const auto cosine = hn::LoadU(d, cosines + i);
    const auto sine = hn::LoadU(d, sines + i);
    const auto x = hn::Sub(hn::Mul(cosine, cosHeading), hn::Mul(sine, sinHeading));
    const auto y = hn::Add(hn::Mul(sine, cosHeading), hn::Mul(cosine, sinHeading));
    const auto xPart = hn::Abs(x);
    const auto yPart = hn::Abs(y);
    sectors.steep |= bitsOf(hn::Gt(yPart, xPart)) << i;
    xBack |= bitsOf(hn::Lt(x, zero)) << i;
    yBack |= bitsOf(hn::Lt(y, zero)) << i;
    hn::Store(hn::Max(xPart, yPart), d, rays.alongPart + i);
    hn::Store(hn::Min(xPart, yPart), d, rays.acrossPart + i);
  }
  sectors.alongReversed = (yBack & sectors.steep) | (xBack & ~sectors.steep);
  sectors.acrossReversed = (xBack & sectors.steep) | (yBack & ~sectors.steep);
  return sectors;
}

/** The frames of some rays' sectors. */
class Frames {
 public:
  HWY_INLINE Frames(const FanCast& fan, const Sides& sides) : fan(fan), sides(sides) {}

  HWY_INLINE void find(const Sectors& sectors, int i) {
    const Doubles d;
    const auto steep = maskOf(sectors.steep >> i);
    alongBack = maskOf(sectors.alongReversed >> i);
    acrossBack = maskOf(sectors.acrossReversed >> i);
    const auto choose = [&](double x, double y) {
      return hn::IfThenElse(steep, hn::Set(d, y), hn::Set(d, x));
    };
    const Side* const x = sides.x;
    const Side* const y = sides.y;
    along =
        hn::IfThenElse(alongBack, choose(x[1].along, y[1].along), choose(x[0].along, y[0].along));
    across =
        hn::IfThenElse(acrossBack, choose(y[1].along, x[1].along), choose(y[0].along, x[0].along));
    const auto toEdge = hn::IfThenElse(alongBack, choose(x[1].toEdge, y[1].toEdge),
                                       choose(x[0].toEdge, y[0].toEdge));
    lastColumn = choose(fan.width - 1, fan.height - 1);
    rows = choose(fan.height, fan.width);
    first = hn::Trunc(along);
    toExit = hn::Sub(hn::Add(first, hn::Set(d, 1.0)), along);
    toLowEnd = hn::Add(toEdge, hn::IfThenElseZero(acrossBack, hn::Set(d, kStrip)));
    // A little less than the image's lowest row.
    constexpr double kMargin = Height{1} << kDroppedBits;
    floor = hn::Sub(hn::IfThenElseZero(acrossBack, hn::Mul(rows, hn::Set(d, kOne))),
                    hn::Set(d, kMargin));
  }

  hn::Mask<Doubles> alongBack;
  hn::Mask<Doubles> acrossBack;
  /** The start, and the first column. */
  hn::Vec<Doubles> along;
  hn::Vec<Doubles> across;
  hn::Vec<Doubles> first;
  hn::Vec<Doubles> lastColumn;
  hn::Vec<Doubles> rows;
  /** The distances in columns to the end of the first one, and from there to where a line is lowest
   * over the first strip. */
  hn::Vec<Doubles> toExit;
  hn::Vec<Doubles> toLowEnd;
  hn::Vec<Doubles> floor;

 private:
  const FanCast& fan;
  const Sides& sides;
};

/** Lines in fixed point of lines. */
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
  hn::Store(exit, Doubles(), values[0]);
  hn::Store(rise, Doubles(), values[1]);
  hn::Store(low, Doubles(), values[2]);
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
    if (mayLeave) {
      const auto top = hn::Add(frames.along, hn::Div(hn::Sub(frames.rows, frames.across), slope));
      reached = hn::Min(reached, top);
    }
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
