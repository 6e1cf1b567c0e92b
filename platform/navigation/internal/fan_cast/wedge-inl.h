// The work that neighbouring rays share.
#if defined(QV_PLATFORM_NAVIGATION_FAN_CAST_WEDGE_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QV_PLATFORM_NAVIGATION_FAN_CAST_WEDGE_INL_H
#undef QV_PLATFORM_NAVIGATION_FAN_CAST_WEDGE_INL_H
#else
#define QV_PLATFORM_NAVIGATION_FAN_CAST_WEDGE_INL_H
#endif

#include <algorithm>
#include <cstdint>
#include <limits>

#include <hwy/highway.h>

#include "platform/navigation/internal/fan_cast/frames-inl.h"
#include "platform/navigation/internal/fan_cast/rays-inl.h"
#include "platform/navigation/internal/fan_sector.h"
#include "platform/navigation/internal/grid_ray.h"
#include "platform/navigation/internal/strip_image.h"

HWY_BEFORE_NAMESPACE();
namespace QV::detail {
namespace HWY_NAMESPACE {
namespace {

// Rays that go ahead together, and the strips that they have to cross for it to pay.
constexpr int kTogether = 8;
constexpr int kFewestStrips = 6;

/** The range of heights between the lines of two rays of a sector, strip by strip. */
class Wedge {
 public:
  Wedge(const FanSector& sector, const Rays& rays, int one, int other)
      : lowest(std::min(rays.low[one], rays.low[other]) - kMargin),
        highest(std::max(rays.low[one] + kStrip * rays.rise[one],
                         rays.low[other] + kStrip * rays.rise[other]) +
                kMargin) {
    const Height least = kStrip * (std::min(rays.rise[one], rays.rise[other]) - 1);
    const Height most = kStrip * (std::max(rays.rise[one], rays.rise[other]) + 1);
    lowAdvance = sector.rowStep > 0 ? least : -most;
    highAdvance = sector.rowStep > 0 ? most : -least;
  }

  /** False, too, where it is too wide to tell. */
  bool isFree(const StripImage::View& image, int strip) const {
    const int row = GridRay::rowFrom(lowest);
    const int more = GridRay::rowFrom(highest) - row;
    return more < StripImage::kRowsSeen &&
           (image.getUsedRows(strip, row) & ((std::uint64_t{2} << more) - 1)) == 0;
  }

  void fetch(const StripImage::View& image, int strip) const {
    image.fetchBlock(strip, groupOf(lowest));
    image.fetchBlock(strip, groupOf(highest));
  }

  void advance(int strips = 1) {
    lowest += strips * lowAdvance;
    highest += strips * highAdvance;
  }

 private:
  // By rounding, rays between the two may lie outside by a little: so much less than this, and the
  // rise of a column by 1.
  static constexpr Height kMargin = (Height{2} * kSlack) << kDroppedBits;

  Height lowest;
  Height highest;
  Height lowAdvance;
  Height highAdvance;
};

/**
 * Finds how many strips neighbouring rays can pass because nothing stands between the first and the
 * last of them; `strips` are known.
 */
HWY_INLINE int goAhead(const FanSector& sector, const Side& side, int first, int last,
                       const Rays& rays, int strips) {
  const StripImage::View image(sector.image);
  const int step = sector.columnStep;
  const int most =
      std::min(step * rays.lastStrip[first], step * rays.lastStrip[last]) - step * side.firstStrip;
  Wedge wedge(sector, rays, first, last);
  if (strips != 0) wedge.advance(strips);
  while (strips <= most && wedge.isFree(image, side.firstStrip + step * strips)) {
    wedge.advance();
    ++strips;
  }
  wedge.fetch(image, side.firstStrip + step * strips);
  return strips;
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace QV::detail
HWY_AFTER_NAMESPACE();

#endif
