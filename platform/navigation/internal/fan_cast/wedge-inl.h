// The work that neighbouring rays share.
#if defined(QV_PLATFORM_NAVIGATION_FAN_CAST_WEDGE_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QV_PLATFORM_NAVIGATION_FAN_CAST_WEDGE_INL_H
#undef QV_PLATFORM_NAVIGATION_FAN_CAST_WEDGE_INL_H
#else
#define QV_PLATFORM_NAVIGATION_FAN_CAST_WEDGE_INL_H
#endif

#include <algorithm>
#include <cstdint>

#include <hwy/highway.h>

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
      : flattest(std::min(rays.rise[one], rays.rise[other])),
        steepest(std::max(rays.rise[one], rays.rise[other])),
        lowest(static_cast<Height>(std::min(rays.low[one], rays.low[other]))),
        highest(static_cast<Height>(std::max(rays.low[one] + kStrip * rays.rise[one],
                                             rays.low[other] + kStrip * rays.rise[other]))) {
    highest += Height{kSlack} << kDroppedBits;
    const Height least = kStrip * static_cast<Height>(flattest);
    const Height most = kStrip * static_cast<Height>(steepest);
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

  void advance() {
    lowest += lowAdvance;
    highest += highAdvance;
  }

  HWY_INLINE hn::Mask<Doubles> holds(hn::Vec<Doubles> rise) const {
    const Doubles d;
    return hn::And(hn::Ge(rise, hn::Set(d, flattest)), hn::Le(rise, hn::Set(d, steepest)));
  }

 private:
  double flattest;
  double steepest;
  Height lowest;
  Height highest;
  Height lowAdvance;
  Height highAdvance;
};

/** Starts these rays, first to last, some strips further on. */
HWY_INLINE void putAhead(const FanSector& sector, const Wedge& wedge, int first, int last,
                         int strips, Rays& rays) {
  const Doubles d;
  static_assert(kTogether % hn::MaxLanes(Doubles()) == 0, "no lane is another bundle's");
  const double strip = rays.firstStrip[first] + sector.columnStep * strips;
  const int nearEdge = kStrip * static_cast<int>(strip) + (sector.alongReversed ? kStrip - 1 : 0);
  const auto column = hn::Set(d, sector.turnColumn(nearEdge));
  const auto advance = hn::Set(d, sector.rowStep * kStrip * strips);
  for (int i = first; i <= last; i += static_cast<int>(hn::Lanes(d))) {
    const auto rise = hn::LoadU(d, rays.rise + i);
    const auto low = hn::LoadU(d, rays.low + i);
    const auto from = hn::LoadU(d, rays.firstStrip + i);
    // Rounding may put a ray outside the wedge or end it early.
    const auto goes = hn::And(wedge.holds(rise), hn::Ge(hn::LoadU(d, rays.last + i), column));
    const auto risen = hn::IfThenElseZero(goes, hn::Mul(hn::Trunc(rise), advance));
    hn::StoreU(hn::Add(low, risen), d, rays.low + i);
    hn::StoreU(hn::IfThenElse(goes, hn::Set(d, strip), from), d, rays.firstStrip + i);
  }
}

/** Lets neighbouring rays pass together the strips where nothing stands between them. */
HWY_NOINLINE void goAhead(const FanSector& sector, int begin, int end, Rays& rays) {
  const StripImage::View image(sector.image);
  const int step = sector.columnStep;
  for (int first = begin; first < end; first += kTogether) {
    const int last = std::min(first + kTogether, end) - 1;
    const int start = static_cast<int>(rays.firstStrip[first]);
    const int most =
        std::min(step * rays.lastStrip[first], step * rays.lastStrip[last]) - step * start;
    Wedge wedge(sector, rays, first, last);
    int strips = 0;
    for (; strips < most && wedge.isFree(image, start + step * strips); ++strips) wedge.advance();
    if (strips == 0) continue;
    wedge.fetch(image, start + step * strips);
    putAhead(sector, wedge, first, last, strips, rays);
  }
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace QV::detail
HWY_AFTER_NAMESPACE();

#endif
