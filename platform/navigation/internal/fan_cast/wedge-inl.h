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

/** The strips that rays may skip whose lines are not outside these. */
struct Bundle {
  explicit Bundle(int strips) : strips(strips) {}
  bool holds(Height rise) const { return rise >= flattest && rise <= steepest; }

  int strips;
  Height flattest = 0;
  Height steepest = std::numeric_limits<Height>::max();
};

/** The range of heights between the lines of two rays of a sector, strip by strip. */
class Wedge {
 public:
  Wedge(const FanSector& sector, const Rays& rays, const Bundle& bundle, int one, int other)
      : lowest(std::min(rays.low[one], rays.low[other])),
        highest(std::max(rays.low[one] + kStrip * rays.rise[one],
                         rays.low[other] + kStrip * rays.rise[other])) {
    highest += Height{kSlack} << kDroppedBits;
    const Height least = kStrip * bundle.flattest;
    const Height most = kStrip * bundle.steepest;
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
  Height lowest;
  Height highest;
  Height lowAdvance;
  Height highAdvance;
};

/**
 * Finds how many strips neighbouring rays can pass because nothing stands between the first and the
 * last of them; `skipped` are known.
 */
HWY_INLINE Bundle goAhead(const FanSector& sector, const Side& side, int first, int last,
                          const Rays& rays, int skipped) {
  const StripImage::View image(sector.image);
  const int step = sector.columnStep;
  const int most =
      std::min(step * rays.lastStrip[first], step * rays.lastStrip[last]) - step * side.firstStrip;
  Bundle bundle(skipped);
  bundle.flattest = std::min(rays.rise[first], rays.rise[last]);
  bundle.steepest = std::max(rays.rise[first], rays.rise[last]);
  Wedge wedge(sector, rays, bundle, first, last);
  if (skipped != 0) wedge.advance(skipped);
  while (bundle.strips < most && wedge.isFree(image, side.firstStrip + step * bundle.strips)) {
    wedge.advance();
    ++bundle.strips;
  }
  wedge.fetch(image, side.firstStrip + step * bundle.strips);
  return bundle;
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace QV::detail
HWY_AFTER_NAMESPACE();

#endif
