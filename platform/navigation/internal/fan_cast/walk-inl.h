// The step of a cast that each ray makes for itself.
#if defined(QV_PLATFORM_NAVIGATION_FAN_CAST_WALK_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QV_PLATFORM_NAVIGATION_FAN_CAST_WALK_INL_H
#undef QV_PLATFORM_NAVIGATION_FAN_CAST_WALK_INL_H
#else
#define QV_PLATFORM_NAVIGATION_FAN_CAST_WALK_INL_H
#endif

#include <cstdint>

#include <hwy/highway.h>

#include "platform/navigation/internal/fan_cast/aim-inl.h"
#include "platform/navigation/internal/fan_cast/column_finder-inl.h"
#include "platform/navigation/internal/fan_cast/rays-inl.h"
#include "platform/navigation/internal/fan_sector.h"
#include "platform/navigation/internal/grid_ray.h"
#include "platform/navigation/internal/strip_image.h"

HWY_BEFORE_NAMESPACE();
namespace QV::detail {
namespace HWY_NAMESPACE {
namespace {

/**
 * Returns the bits of the rows that something of this height can lie in, counted from its start, at
 * the most.
 */
std::uint32_t rowsOf(std::uint32_t height) {
  return (4u << (height >> kFractionBits)) - 1;
}

/** The end of a walk: the first strip with columns to settle or, if none has any, the last one. */
struct Stop {
  int strip;
  int group;
  const StripImage::Block* block;
  std::uint32_t columns;
};

constexpr StripImage::Block kEmptyBlock;

/** Keeps the nearest of the columns. */
HWY_INLINE void keep(const FanSector& sector, const Stop& stop, int i, Rays& rays) {
  const std::uint32_t none = stop.columns == 0;
  const auto lane = static_cast<unsigned>(
      sector.alongReversed ? 31 - hwy::Num0BitsAboveMS1Bit_Nonzero32(stop.columns | none)
                           : hwy::Num0BitsBelowLS1Bit_Nonzero32(stop.columns | none));
  rays.column[i] = kStrip * stop.strip + static_cast<int>(lane);
  rays.word[i] = stop.block->words[lane] & (none - 1u);
  rays.bitBase[i] = sector.rowBase - StripImage::kGroupRows * stop.group;
}

/** Finds for each ray the first column beyond its own with a cell that it touches or comes near. */
template <bool kAhead>
HWY_INLINE void walk(const FanSector& sector, const Approach& approach, int begin, int end,
                     Rays& rays) {
  const StripImage::View image(sector.image);
  const int columnStep = sector.columnStep;
  const int rowStep = sector.rowStep;
  ColumnFinder finder(sector);
  const std::uint32_t all = (1u << kStrip) - 1;
  const int place = approach.from % kStrip;
  const std::uint32_t ahead = sector.alongReversed ? (1u << place) - 1 : all & (all << place << 1);
  for (int i = begin; i < end; ++i) {
    const auto rise = static_cast<Height>(rays.rise[i]);
    rays.wholeRise[i] = rise;
    rays.wholeExit[i] = static_cast<Height>(rays.exit[i]);
    const int lastStrip = rays.lastStrip[i];
    const Height advance = rowStep * (kStrip * rise);
    const auto shortRise = static_cast<std::uint32_t>(rise >> kDroppedBits);
    const std::uint32_t rows = rowsOf(kStrip * shortRise + kSlack);
    finder.setRise(shortRise);
    auto low = static_cast<Height>(rays.low[i]);
    const int firstStrip = kAhead ? static_cast<int>(rays.firstStrip[i]) : approach.firstStrip;
    std::uint32_t wanted = firstStrip == approach.firstStrip ? ahead : all;
    for (Stop stop{firstStrip, 0, &kEmptyBlock, 0};; stop.strip += columnStep) {
      stop.group = groupOf(low);
      if ((image.getUsedRows(stop.strip, GridRay::rowFrom(low)) & rows) != 0) {
        stop.block = &image.getBlock(stop.strip, stop.group);
        stop.columns = finder.find(*stop.block, heightInGroup(low), wanted);
      }
      if (stop.columns != 0 || stop.strip == lastStrip) {
        keep(sector, stop, i, rays);
        break;
      }
      low += advance;
      wanted = all;
    }
  }
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace QV::detail
HWY_AFTER_NAMESPACE();

#endif
