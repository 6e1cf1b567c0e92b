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

/** Whole numbers, truncated. */
HWY_INLINE hn::Vec<Heights> truncate(hn::Vec<Doubles> values) {
#if HWY_TARGET <= HWY_AVX3
  return hn::ConvertTo(Heights(), values);
#else
  // One by one: what these machines have for vectors takes longer.
  alignas(64) double from[hn::MaxLanes(Doubles())];
  alignas(64) Height to[hn::MaxLanes(Doubles())];
  hn::Store(values, Doubles(), from);
  for (std::size_t i = 0; i < hn::MaxLanes(Doubles()); ++i) to[i] = static_cast<Height>(from[i]);
  return hn::Load(Heights(), to);
#endif
}

/** Makes lines in fixed point of the rays' lines, whose walks have met nothing so far. */
HWY_INLINE void prepare(const FanSector& sector, const Approach& approach, int begin, int end,
                        Rays& rays) {
  const Doubles d;
  const Heights dHeight;
  const hn::Rebind<std::int32_t, Doubles> d32;
  const hn::Rebind<std::uint32_t, Doubles> dWord;
  const auto backwards = hn::Set(dHeight, sector.acrossReversed ? -1 : 0);
  const auto slack = hn::Set(dHeight, Height{kSlack} << kDroppedBits);
  for (int i = begin; i < end; i += static_cast<int>(hn::Lanes(d))) {
    const auto rise = truncate(hn::LoadU(d, rays.rise + i));
    const auto perStrip = hn::ShiftLeft<StripImage::kStripBits>(rise);
    // What a line crosses in a strip, counted from the row where it is lowest, at the most.
    const auto more = hn::ShiftRight<GridRay::kFractionBits>(hn::Add(perStrip, slack));
    hn::StoreU(truncate(hn::LoadU(d, rays.exit + i)), dHeight, rays.wholeExit + i);
    hn::StoreU(rise, dHeight, rays.wholeRise + i);
    hn::StoreU(truncate(hn::LoadU(d, rays.low + i)), dHeight, rays.wholeLow + i);
    hn::StoreU(hn::Sub(hn::Xor(perStrip, backwards), backwards), dHeight, rays.advance + i);
    hn::StoreU(hn::Sub(hn::Shl(hn::Set(dHeight, 4), more), hn::Set(dHeight, 1)), dHeight,
               rays.rows + i);
    hn::StoreU(hn::Set(d32, approach.from), d32, rays.column + i);
    hn::StoreU(hn::Zero(dWord), dWord, rays.word + i);
  }
}

/** Finds for each ray the first column beyond its own with a cell that it touches or comes near. */
template <bool kAhead>
HWY_INLINE void walk(const FanSector& sector, const Approach& approach, int begin, int end,
                     Rays& rays) {
  prepare(sector, approach, begin, end, rays);
  const StripImage::View image(sector.image);
  const int columnStep = sector.columnStep;
  const ColumnFinder finder(sector);
  const std::uint32_t all = (1u << kStrip) - 1;
  const int place = approach.from % kStrip;
  const std::uint32_t ahead = sector.alongReversed ? (1u << place) - 1 : all & (all << place << 1);
  for (int i = begin; i < end; ++i) {
    const Height advance = rays.advance[i];
    const Height rows = rays.rows[i];
    Height low = rays.wholeLow[i];
    StripImage::View::Strip strip(image, kAhead ? static_cast<int>(rays.firstStrip[i])
                                                : approach.firstStrip);
    const StripImage::View::Strip last(image, rays.lastStrip[i]);
    for (;; strip.move(columnStep), low += advance) {
      if ((image.getUsedRows(strip, GridRay::rowFrom(low)) & rows) != 0) {
        const int number = image.numberOf(strip);
        const int group = groupOf(low);
        const StripImage::Block& block = image.getBlock(number, group);
        const std::uint32_t columns =
            finder.find(block, heightInGroup(low),
                        static_cast<std::uint32_t>(rays.wholeRise[i] >> kDroppedBits),
                        number == approach.firstStrip ? ahead : all);
        if (columns != 0) {
          const auto lane = static_cast<unsigned>(
              sector.alongReversed ? 31 - hwy::Num0BitsAboveMS1Bit_Nonzero32(columns)
                                   : hwy::Num0BitsBelowLS1Bit_Nonzero32(columns));
          rays.column[i] = kStrip * number + static_cast<int>(lane);
          rays.word[i] = block.words[lane];
          rays.bitBase[i] = sector.rowBase - StripImage::kGroupRows * group;
          break;
        }
      }
      if (strip == last) break;
    }
  }
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace QV::detail
HWY_AFTER_NAMESPACE();

#endif
