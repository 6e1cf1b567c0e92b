// The data that the steps of a cast hand on. Like its neighbours it is read once for every
// instruction set, hence the guard that turns over each time.
#if defined(QV_PLATFORM_NAVIGATION_FAN_CAST_RAYS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QV_PLATFORM_NAVIGATION_FAN_CAST_RAYS_INL_H
#undef QV_PLATFORM_NAVIGATION_FAN_CAST_RAYS_INL_H
#else
#define QV_PLATFORM_NAVIGATION_FAN_CAST_RAYS_INL_H
#endif

#include <cstdint>
#include <limits>

#include <hwy/highway.h>

#include "platform/navigation/internal/fan_cast.h"
#include "platform/navigation/internal/fan_sector.h"
#include "platform/navigation/internal/grid_ray.h"
#include "platform/navigation/internal/strip_image.h"

HWY_BEFORE_NAMESPACE();
namespace QV::detail {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using Height = GridRay::Height;
using Doubles = hn::ScalableTag<double>;
using Bits = hn::RebindToUnsigned<Doubles>;
using Heights = hn::RebindToSigned<Doubles>;

constexpr double kNever = std::numeric_limits<double>::infinity();
constexpr double kDoubtful = std::numeric_limits<double>::quiet_NaN();
constexpr double kOne = static_cast<double>(Height{1} << GridRay::kFractionBits);
constexpr int kStrip = StripImage::kStripColumns;

// Heights within a block: 5 bits of rows, the rest for the fraction. What a height and the rises
// that follow it lose by that is less than kSlack in the last place.
constexpr int kFractionBits = 27;
constexpr int kDroppedBits = GridRay::kFractionBits - kFractionBits;
constexpr int kGroupShift = GridRay::kFractionBits + StripImage::kGroupBits;
constexpr std::uint32_t kInGroup = (1u << (kFractionBits + StripImage::kGroupBits)) - 1;
constexpr std::uint32_t kSlack = kStrip + 3;

/**
 * The rays of a fan, each value of all of them together, in the frames of their sectors. Vectors
 * are written and read at the same places: what lies across two that were just written takes long.
 */
struct Rays {
  static constexpr int kSize = FanCast::kMostRays + FanCast::kMore;

  alignas(64) double along[kSize];
  double across[kSize];
  double alongPart[kSize];
  double perColumn[kSize];
  double acrossPart[kSize];
  double last[kSize];
  /** The way of what is no hit: infinite, or in doubt. */
  double otherwise[kSize];
  /** Heights of a GridRay. */
  Height exit[kSize];
  Height rise[kSize];
  /** Heights in the image: of the line's low end over its first strip, and what that gains from
   * strip to strip. */
  Height low[kSize];
  Height advance[kSize];
  /** The bits of the rows that a line can touch in a strip, counted from its low end's. */
  Height rows[kSize];
  std::int32_t lastStrip[kSize];
  /** The walk's results: whether a ray meets anything, a bit each; in which column, its word in a
   * block, and the bit of row 0. */
  std::uint64_t met = 0;
  std::int32_t column[kSize];
  std::int32_t word[kSize];
  std::int32_t bitBase[kSize];
};

/** The flags of all rays' sectors, a bit each. */
struct Sectors {
  std::uint64_t steep = 0;
  std::uint64_t alongReversed = 0;
  std::uint64_t acrossReversed = 0;

  int of(int ray) const {
    const auto flag = [ray](std::uint64_t bits) { return static_cast<int>(bits >> ray & 1); };
    return flag(steep) * FanSector::kSteep + flag(alongReversed) * FanSector::kAlongReversed +
           flag(acrossReversed) * FanSector::kAcrossReversed;
  }

  /** Bit i is set when ray i + 1 is in another sector than ray i. */
  std::uint64_t findChanges() const {
    const auto changes = [](std::uint64_t bits) { return bits ^ bits >> 1; };
    return changes(steep) | changes(alongReversed) | changes(acrossReversed);
  }
  /** Bit i is set when ray i is the last of those in its sector. */
  std::uint64_t findLasts(int count) const {
    const std::uint64_t end = std::uint64_t{1} << (count - 1);
    return (findChanges() & (end - 1)) | end;
  }
  /** True if `lanes` rays from this one on and as many before it are not all in one sector. */
  bool changeAround(int ray, int lanes) const {
    const std::uint64_t all = (std::uint64_t{1} << (2 * lanes - 1)) - 1;
    return (findChanges() >> (ray - lanes) & all) != 0;
  }
};

int groupOf(Height height) {
  return static_cast<int>(height >> kGroupShift);
}

std::uint32_t heightInGroup(Height height) {
  return static_cast<std::uint32_t>(height >> kDroppedBits) & kInGroup;
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace QV::detail
HWY_AFTER_NAMESPACE();

#endif
