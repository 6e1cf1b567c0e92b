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
  static_assert(kSize * sizeof(std::int32_t) % 32 == 0, "each array is aligned for its vectors");

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
  /** The walk's results: in which column a ray meets anything, its word in a block, and the bit of
   * row 0; last, whether it does, a bit each. */
  std::int32_t column[kSize];
  std::int32_t word[kSize];
  std::int32_t bitBase[kSize];
  std::uint64_t met = 0;
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
