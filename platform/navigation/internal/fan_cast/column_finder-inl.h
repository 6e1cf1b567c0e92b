// The look into a block.
#if defined(QV_PLATFORM_NAVIGATION_FAN_CAST_COLUMN_FINDER_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QV_PLATFORM_NAVIGATION_FAN_CAST_COLUMN_FINDER_INL_H
#undef QV_PLATFORM_NAVIGATION_FAN_CAST_COLUMN_FINDER_INL_H
#else
#define QV_PLATFORM_NAVIGATION_FAN_CAST_COLUMN_FINDER_INL_H
#endif

#include <cstdint>

#include <hwy/highway.h>

#include "platform/navigation/internal/fan_cast/rays-inl.h"
#include "platform/navigation/internal/fan_sector.h"
#include "platform/navigation/internal/strip_image.h"

HWY_BEFORE_NAMESPACE();
namespace QV::detail {
namespace HWY_NAMESPACE {
namespace {

// Finds the columns of a block in which a line touches a cell that is there, or comes within kSlack
// of it. The line is given by its height where it is lowest, at an edge of the strip.
#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

/** The rows that heights within a block lie in, as bits. */
std::uint32_t rowsBetween(std::uint32_t low, std::uint32_t high) {
  return (2u << (high >> kFractionBits)) - (1u << (low >> kFractionBits));
}

/** Four columns at a time, and of these only the first with any. */
class ColumnFinder {
 public:
  explicit ColumnFinder(const FanSector& sector)
      : back(sector.alongReversed), falls(sector.falls()) {}

  std::uint32_t find(const StripImage::Block& block, std::uint32_t low, std::uint32_t rise,
                     std::uint32_t wanted) const {
    const bool fromTop = back != falls;
    std::uint32_t height = fromTop ? low + (kStrip - kQuad) * rise : low;
    unsigned quad = back ? kStrip - kQuad : 0;
    for (unsigned i = 0; i < kStrip / kQuad; ++i) {
      const std::uint32_t* const words = &block.words[quad];
      const std::uint32_t any = words[0] | words[1] | words[2] | words[3];
      if ((any & rowsBetween(height, height + kQuad * rise + kSlack)) != 0) {
        const std::uint32_t found = xFindInQuad(words, height, rise) << quad & wanted;
        if (found != 0) return found;
      }
      height += fromTop ? 0u - kQuad * rise : kQuad * rise;
      quad += back ? 0u - kQuad : kQuad;
    }
    return 0;
  }

 private:
  static constexpr unsigned kQuad = 4;

  std::uint32_t xFindInQuad(const std::uint32_t* words, std::uint32_t low,
                            std::uint32_t rise) const {
    std::uint32_t height = falls ? low + (kQuad - 1) * rise : low;
    std::uint32_t found = 0;
    for (unsigned i = 0; i < kQuad; ++i) {
      const std::uint32_t row = height >> kFractionBits;
      const std::uint32_t crosses = ((height + rise + kSlack) >> kFractionBits) - row;
      // The ray touches one row, or with those that it crosses two or three.
      const bool touches = (words[i] >> row & (3 * crosses | 1)) != 0;
      found |= std::uint32_t{touches} << i;
      height += falls ? 0u - rise : rise;
    }
    return found;
  }

  bool back;
  bool falls;
};

#else

/** All sixteen columns, in as many vectors as it takes. */
class ColumnFinder {
 public:
  explicit ColumnFinder(const FanSector& sector) {
    const Words d;
    const auto iota = hn::Iota(d, 0);
    rank = sector.falls() ? hn::Sub(hn::Set(d, kStrip - 1u), iota) : iota;
    lanesOnward = hn::Set(d, sector.falls() ? 0u - kLanes : kLanes);
  }

  HWY_INLINE std::uint32_t find(const StripImage::Block& block, std::uint32_t low,
                                std::uint32_t perColumn, std::uint32_t wanted) const {
    const Words d;
    const auto rise = hn::Set(d, perColumn);
    const auto onward = hn::Mul(lanesOnward, rise);
    const auto span = hn::Add(rise, hn::Set(d, kSlack));
    std::uint32_t free = 0;
    auto lowest = hn::Add(hn::Set(d, low), hn::Mul(rank, rise));
    for (unsigned column = 0; column < kStrip; column += kLanes) {
      const auto highest = hn::Add(lowest, span);
      const auto rows = hn::Sub(hn::Shl(hn::Set(d, 2u), hn::ShiftRight<kFractionBits>(highest)),
                                hn::Shl(hn::Set(d, 1u), hn::ShiftRight<kFractionBits>(lowest)));
      const auto words = hn::Load(d, &block.words[column]);
      std::uint16_t bits = 0;
      hn::StoreMaskBits(d, hn::Eq(hn::And(words, rows), hn::Zero(d)),
                        reinterpret_cast<std::uint8_t*>(&bits));
      free |= std::uint32_t{bits} << column;
      lowest = hn::Add(lowest, onward);
    }
    return wanted & ~free;
  }

 private:
  using Words = hn::CappedTag<std::uint32_t, kStrip>;
  static constexpr auto kLanes = static_cast<unsigned>(hn::MaxLanes(Words()));

  /** A lane's place counted from the low end of the line. */
  hn::Vec<Words> rank;
  hn::Vec<Words> lanesOnward;
};

#endif

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace QV::detail
HWY_AFTER_NAMESPACE();

#endif
