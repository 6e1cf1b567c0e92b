// The first step of a cast.
#if defined(QV_PLATFORM_NAVIGATION_FAN_CAST_SECTORS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QV_PLATFORM_NAVIGATION_FAN_CAST_SECTORS_INL_H
#undef QV_PLATFORM_NAVIGATION_FAN_CAST_SECTORS_INL_H
#else
#define QV_PLATFORM_NAVIGATION_FAN_CAST_SECTORS_INL_H
#endif

#include <cstdint>

#include <hwy/highway.h>

#include "platform/navigation/internal/fan_cast.h"
#include "platform/navigation/internal/fan_cast/rays-inl.h"
#include "platform/navigation/internal/fan_sector.h"

HWY_BEFORE_NAMESPACE();
namespace QV::detail {
namespace HWY_NAMESPACE {
namespace {

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

HWY_INLINE std::uint64_t bitsOf(hn::Mask<Doubles> mask) {
  std::uint64_t bits = 0;
  hn::StoreMaskBits(Doubles(), mask, reinterpret_cast<std::uint8_t*>(&bits));
  return bits;
}

/** The mask of as many lanes as there are; the other bits don't matter. */
HWY_INLINE hn::Mask<Doubles> maskOf(std::uint64_t bits) {
  return hn::LoadMaskBits(Doubles(), reinterpret_cast<const std::uint8_t*>(&bits));
}

/** Turns the directions by the heading, and sorts them into sectors. */
Sectors turn(const FanCast& fan, const double* cosines, const double* sines, int count,
             Rays& rays) {
  const Doubles d;
  const auto zero = hn::Zero(d);
  const auto cosHeading = hn::Set(d, fan.cosHeading);
  const auto sinHeading = hn::Set(d, fan.sinHeading);
  Sectors sectors;
  std::uint64_t xBack = 0;
  std::uint64_t yBack = 0;
  for (int i = 0; i < count; i += static_cast<int>(hn::Lanes(d))) {
    const auto cosine = hn::LoadU(d, cosines + i);
    const auto sine = hn::LoadU(d, sines + i);
    const auto x = hn::Sub(hn::Mul(cosine, cosHeading), hn::Mul(sine, sinHeading));
    const auto y = hn::Add(hn::Mul(sine, cosHeading), hn::Mul(cosine, sinHeading));
    const auto xPart = hn::Abs(x);
    const auto yPart = hn::Abs(y);
    sectors.steep |= bitsOf(hn::Gt(yPart, xPart)) << i;
    xBack |= bitsOf(hn::Lt(x, zero)) << i;
    yBack |= bitsOf(hn::Lt(y, zero)) << i;
    hn::Store(hn::Max(xPart, yPart), d, rays.alongPart + i);
    hn::Store(hn::Min(xPart, yPart), d, rays.acrossPart + i);
  }
  sectors.alongReversed = (yBack & sectors.steep) | (xBack & ~sectors.steep);
  sectors.acrossReversed = (xBack & sectors.steep) | (yBack & ~sectors.steep);
  return sectors;
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace QV::detail
HWY_AFTER_NAMESPACE();

#endif
