// The frames of sectors, from a fan's start.
#if defined(QV_PLATFORM_NAVIGATION_FAN_CAST_FRAMES_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QV_PLATFORM_NAVIGATION_FAN_CAST_FRAMES_INL_H
#undef QV_PLATFORM_NAVIGATION_FAN_CAST_FRAMES_INL_H
#else
#define QV_PLATFORM_NAVIGATION_FAN_CAST_FRAMES_INL_H
#endif

#include <cstdint>

#include <hwy/highway.h>

#include "platform/navigation/internal/fan_cast.h"
#include "platform/navigation/internal/fan_cast/rays-inl.h"
#include "platform/navigation/internal/fan_cast/sectors-inl.h"
#include "platform/navigation/internal/fan_sector.h"
#include "platform/navigation/internal/strip_image.h"

HWY_BEFORE_NAMESPACE();
namespace QV::detail {
namespace HWY_NAMESPACE {
namespace {

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

/** The frames of some rays' sectors. */
class Frames {
 public:
  HWY_INLINE Frames(const FanCast& fan, const Sides& sides) : fan(fan), sides(sides) {}

  /** Returns where rays of such slopes leave the map across their axes. */
  template <typename Slope>
  HWY_INLINE Slope findTop(Slope slope) const {
    return hn::Add(along, hn::Div(hn::Sub(rows, across), slope));
  }

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

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace QV::detail
HWY_AFTER_NAMESPACE();

#endif
