// The last step of a cast.
#if defined(QV_PLATFORM_NAVIGATION_FAN_CAST_SETTLE_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QV_PLATFORM_NAVIGATION_FAN_CAST_SETTLE_INL_H
#undef QV_PLATFORM_NAVIGATION_FAN_CAST_SETTLE_INL_H
#else
#define QV_PLATFORM_NAVIGATION_FAN_CAST_SETTLE_INL_H
#endif

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include <hwy/highway.h>

#include "platform/navigation/internal/fan_cast/rays-inl.h"
#include "platform/navigation/internal/fan_cast/sectors-inl.h"
#include "platform/navigation/internal/fan_sector.h"
#include "platform/navigation/internal/grid_ray.h"

HWY_BEFORE_NAMESPACE();
namespace QV::detail {
namespace HWY_NAMESPACE {
namespace {

/** The places where some rays cross the columns that the walk found. */
struct Crossing {
  hn::Vec<Doubles> column;
  /** The row after the one where a ray enters the column. */
  hn::Vec<Doubles> nextRow;
  /** True if the walk found any; if a cell stands where the ray enters; and if one stands where
   * the ray goes on to the next row, should it do so. */
  hn::Mask<Doubles> isAny;
  hn::Mask<Doubles> hitsOnEntry;
  hn::Mask<Doubles> hitsNext;
};

/** True where bit `bit` of a word is set; a bit that is none wraps around to one. */
HWY_INLINE hn::Mask<Doubles> hasBit(hn::Vec<Bits> words, hn::Vec<Bits> bit) {
  const Bits d;
  const auto mask = hn::Shl(hn::Set(d, 1), hn::And(bit, hn::Set(d, 63)));
  return hn::RebindMask(Doubles(), hn::TestBit(words, mask));
}

/** A whole number below 2^52. */
HWY_INLINE hn::Vec<Doubles> toDouble(hn::Vec<Bits> number) {
  const Doubles d;
  const auto base = hn::Set(d, 0x1p52);
  return hn::Sub(hn::BitCast(d, hn::Or(number, hn::BitCast(Bits(), base))), base);
}

HWY_INLINE Crossing cross(const Sectors& sectors, const Rays& rays, int i) {
  const Bits d;
  const hn::RebindToSigned<Doubles> dHeight;
  const hn::Rebind<std::int32_t, Doubles> dInt;
  const hn::Rebind<std::uint32_t, Doubles> dWord;
  const auto column = hn::Load(dInt, rays.column + i);
  const auto first = hn::DemoteTo(dInt, hn::Load(Doubles(), rays.along + i));
  const auto columnsOn = hn::PromoteTo(dHeight, hn::Sub(column, first));
  const auto rise = hn::Load(dHeight, rays.rise + i);
  const auto exit = hn::Add(hn::Load(dHeight, rays.exit + i), hn::Mul(columnsOn, rise));
  const auto row = hn::ShiftRight<GridRay::kFractionBits>(hn::BitCast(d, hn::Sub(exit, rise)));
  const auto nextRow = hn::Add(row, hn::Set(d, 1));
  const auto nextHeight = hn::BitCast(dHeight, hn::ShiftLeft<GridRay::kFractionBits>(nextRow));
  const auto backwards = hn::VecFromMask(d, hn::RebindMask(d, maskOf(sectors.acrossReversed >> i)));
  const auto turned = hn::Sub(hn::Xor(row, backwards), backwards);
  const auto bit =
      hn::Add(turned, hn::BitCast(d, hn::PromoteTo(dHeight, hn::Load(dInt, rays.bitBase + i))));
  const auto nextBit = hn::Add(bit, hn::Or(backwards, hn::Set(d, 1)));
  const auto words = hn::PromoteTo(d, hn::BitCast(dWord, hn::Load(dInt, rays.word + i)));
  const auto crosses = hn::RebindMask(Doubles(), hn::Gt(exit, nextHeight));
  const auto isAny = maskOf(rays.met >> i);
  return {hn::PromoteTo(Doubles(), column), toDouble(nextRow), isAny, hasBit(words, bit),
          hn::And(crosses, hasBit(words, nextBit))};
}

/**
 * Settles whether rays meet what the walk found, or only come near: in doubt then. Measures their
 * ways as GridRay does. Tells whether any is in doubt.
 */
bool settle(const Sectors& sectors, const Rays& rays, int count, double* ways) {
  const Doubles d;
  auto doubts = hn::MaskFromVec(hn::Zero(d));
  for (int i = 0; i < count; i += static_cast<int>(hn::Lanes(d))) {
    const auto otherwise = hn::Load(d, rays.otherwise + i);
    if ((rays.met >> i & ((std::uint64_t{1} << hn::Lanes(d)) - 1)) == 0) {
      doubts = hn::Or(doubts, hn::IsNaN(otherwise));
      hn::StoreU(otherwise, d, ways + i);
      continue;
    }
    const Crossing found = cross(sectors, rays, i);
    const auto along = hn::Load(d, rays.along + i);
    const auto across = hn::Load(d, rays.across + i);
    const auto perColumn = hn::Load(d, rays.perColumn + i);
    const auto nextColumn = hn::Add(found.column, hn::Set(d, 1.0));
    const auto enters = hn::Mul(hn::Sub(found.column, along), perColumn);
    const auto leaves = hn::Mul(hn::Sub(nextColumn, along), perColumn);
    const auto rises = hn::Div(hn::Sub(found.nextRow, across), hn::Load(d, rays.acrossPart + i));
    const auto onNext = hn::Min(hn::Max(rises, enters), leaves);
    const auto way = hn::IfThenElse(found.hitsOnEntry, enters, onNext);
    const auto isHit = hn::Or(found.hitsOnEntry, found.hitsNext);
    const auto isNear = hn::And(found.isAny, hn::Le(found.column, hn::Load(d, rays.last + i)));
    const auto result =
        hn::IfThenElse(isNear, hn::IfThenElse(isHit, way, hn::Set(d, kDoubtful)), otherwise);
    doubts = hn::Or(doubts, hn::IsNaN(result));
    hn::StoreU(result, d, ways + i);
  }
  return !hn::AllFalse(d, doubts);
}

/** True if checkFirstColumn has anything to do. */
bool isFirstColumnUsed(const FanSector& sector) {
  return sector.has(sector.first, sector.firstRow) || sector.has(sector.first, sector.firstRow + 1);
}

/** Ends rays in the cell where they start, or in the one across which they leave its column. */
void checkFirstColumn(const FanSector& sector, int begin, int end, const Rays& rays, double* ways) {
  const bool onEntry = sector.has(sector.first, sector.firstRow);
  if (!isFirstColumnUsed(sector)) return;
  for (int i = begin; i < end; ++i) {
    if (onEntry) {
      ways[i] = 0.0;
    } else if (GridRay::rowBelow(rays.exit[i]) > sector.firstRow) {
      const double rises = (sector.firstRow + 1 - sector.across) / rays.acrossPart[i];
      ways[i] = std::min(rises, (sector.first + 1 - sector.along) * rays.perColumn[i]);
    }
  }
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace QV::detail
HWY_AFTER_NAMESPACE();

#endif
