#include "robot/world/units/internal/depth_row.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "robot/world/units/internal/depth_row.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace QV::robot {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

// By vectors: this is where the time of a picture goes.
template <class D>
HWY_INLINE void drawPixels(D d, const std::uint16_t* walls, DepthLimits wallLimits,
                           std::uint16_t floor, DepthLimits seen, std::uint16_t* pixels) {
  const auto lie = [&](auto values, DepthLimits limits) {
    return hn::And(hn::Eq(hn::Max(values, hn::Set(d, limits.low)), values),
                   hn::Eq(hn::Min(values, hn::Set(d, limits.high)), values));
  };
  const auto wall = hn::LoadU(d, walls);
  const auto visible = hn::IfThenElse(lie(wall, wallLimits), wall, hn::Set(d, kFarthest));
  const auto depth = hn::Min(visible, hn::Set(d, floor));
  hn::StoreU(hn::IfThenElseZero(lie(depth, seen), depth), d, pixels);
}

void drawRow(const std::vector<std::uint16_t>& walls, DepthLimits wallLimits, std::uint16_t floor,
             DepthLimits seen, std::uint16_t* pixels) {
  const hn::ScalableTag<std::uint16_t> whole;
  const hn::CappedTag<std::uint16_t, 1> single;
  std::size_t i = 0;
  for (; i + hn::Lanes(whole) <= walls.size(); i += hn::Lanes(whole)) {
    drawPixels(whole, &walls[i], wallLimits, floor, seen, pixels + i);
  }
  for (; i < walls.size(); ++i) {
    drawPixels(single, &walls[i], wallLimits, floor, seen, pixels + i);
  }
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace QV::robot
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace QV::robot {
namespace {

HWY_EXPORT(drawRow);

}  // namespace

void drawPlainRow(const std::vector<std::uint16_t>& walls, DepthLimits wallLimits,
                  std::uint16_t floor, DepthLimits seen, std::uint16_t* pixels) {
  HWY_DYNAMIC_DISPATCH(drawRow)(walls, wallLimits, floor, seen, pixels);
}

}  // namespace QV::robot
#endif
