#include "ros2/recording/internal/pixel_row.h"

#include <bit>
#include <cstdint>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "ros2/recording/internal/pixel_row.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace QV::ros2 {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using Floats = hn::CappedTag<float, 8>;

// The same products in the same order as PixelRow::at: the same bits.
HWY_INLINE bool isSame(const PixelRow& row, int column, const Math::Position3D* points) {
  static_assert(sizeof(Math::Position3D) == 3 * sizeof(float));
  const Floats f;
  const hn::RebindToSigned<Floats> i;
  const auto pixels = hn::LoadU(hn::Rebind<std::uint16_t, Floats>(), row.pixels + column);
  const auto depth = hn::ConvertTo(f, hn::PromoteTo(i, pixels));
  const auto metres = hn::Set(f, 0.001f);
  const auto sideways =
      hn::Mul(hn::Mul(hn::LoadU(f, row.columns + column), depth), hn::Set(f, row.width_by_depth));
  const auto upwards = hn::Mul(hn::Mul(hn::Set(f, row.up), depth), hn::Set(f, row.height_by_depth));
  auto x = hn::Zero(f);
  auto y = hn::Zero(f);
  auto z = hn::Zero(f);
  hn::LoadInterleaved3(f, &points->x, x, y, z);
  const auto difference = hn::Or(hn::Or(hn::Xor(x, hn::Mul(depth, metres)),
                                        hn::Xor(y, hn::Mul(sideways, hn::Set(f, -0.001f)))),
                                 hn::Xor(z, hn::Mul(upwards, metres)));
  return hn::AllTrue(i, hn::Eq(hn::BitCast(i, difference), hn::Zero(i)));
}

int matchSome(const PixelRow& row, const Math::Position3D* points, int count) {
  const int lanes = static_cast<int>(hn::Lanes(Floats()));
  int same = 0;
  while (same + lanes <= count && isSame(row, same, points + same)) same += lanes;
  return same;
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace QV::ros2
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace QV::ros2 {
namespace {

HWY_EXPORT(matchSome);

// Zeros of both signs are equal, and NaN never is: neither will do here.
bool hasSameBits(const Math::Position3D& a, const Math::Position3D& b) {
  const auto bits = [](float value) { return std::bit_cast<std::uint32_t>(value); };
  return bits(a.x) == bits(b.x) && bits(a.y) == bits(b.y) && bits(a.z) == bits(b.z);
}

}  // namespace

int PixelRow::match(const Math::Position3D* points, int count) const {
  int same = HWY_DYNAMIC_DISPATCH(matchSome)(*this, points, count);
  for (; same < count; ++same) {
    if (!hasSameBits(at(same), points[same])) break;
  }
  return same;
}

}  // namespace QV::ros2
#endif
