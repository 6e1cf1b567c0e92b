// The step of a cast that each ray makes for itself.
#if defined(QV_PLATFORM_NAVIGATION_FAN_CAST_WALK_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QV_PLATFORM_NAVIGATION_FAN_CAST_WALK_INL_H
#undef QV_PLATFORM_NAVIGATION_FAN_CAST_WALK_INL_H
#else
#define QV_PLATFORM_NAVIGATION_FAN_CAST_WALK_INL_H
#endif

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include <hwy/highway.h>

#include "platform/navigation/internal/fan_cast/column_finder-inl.h"
#include "platform/navigation/internal/fan_cast/frames-inl.h"
#include "platform/navigation/internal/fan_cast/rays-inl.h"
#include "platform/navigation/internal/fan_cast/wedge-inl.h"
#include "platform/navigation/internal/fan_sector.h"
#include "platform/navigation/internal/grid_ray.h"
#include "platform/navigation/internal/strip_image.h"

HWY_BEFORE_NAMESPACE();
namespace QV::detail {
namespace HWY_NAMESPACE {
namespace {

/** The walk of a sector's rays over its image, there or back along its columns. */
template <bool kBack>
class Walk {
 public:
  HWY_INLINE Walk(const FanSector& sector, const Side& side)
      : image(sector.image), finder(sector), sector(sector), side(side) {}

  /** True if no ray can meet anything in the strip where it starts. */
  HWY_INLINE bool isFirstFree() const {
    // From where it starts a ray rises a row for each column at most.
    constexpr int kRows = kStrip + 3;
    const int row = sector.turnRow(sector.firstRow) - (sector.acrossReversed ? kRows - 2 : 1);
    return (image.getUsedRows(side.firstStrip, row) & ((1u << kRows) - 1)) == 0;
  }

  /** Walks with rays from begin to end which have passed `strips` strips. */
  HWY_INLINE void go(int strips, int begin, int end, Rays& rays) const {
    const int start = side.firstStrip + kStep * strips;
    for (int i = begin; i < end; ++i) {
      const Height advance = rays.advance[i];
      xGo(start, rays.low[i] + advance * strips, advance, i, rays);
    }
  }

 private:
  static constexpr int kStep = kBack ? -1 : 1;

  HWY_INLINE void xGo(int strip, Height low, Height advance, int i, Rays& rays) const {
    const int last = rays.lastStrip[i];
    if (kBack ? strip < last : strip > last) return;
    const Height rows = rays.rows[i];
    for (;; strip += kStep, low += advance) {
      if ((image.getUsedRows(strip, GridRay::rowFrom(low)) & rows) != 0 &&
          xLook(strip, low, i, rays)) {
        return;
      }
      if (strip == last) return;
    }
  }

  /** Keeps the nearest column of the block; false if there is none. */
  HWY_INLINE bool xLook(int strip, Height low, int i, Rays& rays) const {
    const int group = groupOf(low);
    const StripImage::Block& block = image.getBlock(strip, group);
    const std::uint32_t columns = finder.find(
        block, heightInGroup(low), static_cast<std::uint32_t>(rays.rise[i] >> kDroppedBits),
        strip == side.firstStrip ? side.ahead : (1u << kStrip) - 1);
    if (columns == 0) return false;
    const auto lane = static_cast<unsigned>(kBack ? 31 - hwy::Num0BitsAboveMS1Bit_Nonzero32(columns)
                                                  : hwy::Num0BitsBelowLS1Bit_Nonzero32(columns));
    rays.met |= std::uint64_t{1} << i;
    rays.column[i] = sector.columnBase + kStep * (kStrip * strip + static_cast<int>(lane));
    rays.word[i] = static_cast<std::int32_t>(block.words[lane]);
    rays.bitBase[i] = sector.rowBase - StripImage::kGroupRows * group;
    return true;
  }

  StripImage::View image;
  ColumnFinder finder;
  const FanSector& sector;
  const Side& side;
};

/** Finds for each ray the first column beyond its own with a cell that it touches or comes near. */
template <bool kBack>
HWY_INLINE void walk(const FanSector& sector, const Side& side, int begin, int end, Rays& rays) {
  const Walk<kBack> walk(sector, side);
  int strips = walk.isFirstFree() ? 1 : 0;
  if (strips != 0) strips = goAhead(sector, side, begin, end - 1, rays, strips);
  if (std::abs(rays.lastStrip[begin] - side.firstStrip) < kFewestStrips &&
      std::abs(rays.lastStrip[end - 1] - side.firstStrip) < kFewestStrips) {
    return walk.go(strips, begin, end, rays);
  }
  for (int i = begin; i < end; i += kTogether) {
    const int bundleEnd = std::min(i + kTogether, end);
    walk.go(goAhead(sector, side, i, bundleEnd - 1, rays, strips), i, bundleEnd, rays);
  }
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace QV::detail
HWY_AFTER_NAMESPACE();

#endif
