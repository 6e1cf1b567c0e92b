#include "platform/navigation/fan_cast.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "platform/navigation/grid_ray.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/navigation/fan_cast.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace QV::detail {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

typedef GridRay::Height Height;
typedef hn::ScalableTag<double> Doubles;
typedef hn::CappedTag<std::uint32_t, StripImage::kStripColumns> Words;

constexpr double kNever = std::numeric_limits<double>::infinity();
constexpr double kDoubtful = std::numeric_limits<double>::quiet_NaN();
constexpr int kStrip = StripImage::kStripColumns;
constexpr std::uint32_t kAllColumns = (1u << kStrip) - 1;

// Heights within a block have 5 bits of rows and the rest for the fraction. What is dropped of a
// height and of the 16 rises that follow makes them too low by less than kSlack in the last place.
constexpr int kFractionBits = 27;
constexpr int kDroppedBits = GridRay::kFractionBits - kFractionBits;
constexpr int kGroupShift = GridRay::kFractionBits + StripImage::kGroupBits;
constexpr std::uint32_t kInGroup = (1u << (kFractionBits + StripImage::kGroupBits)) - 1;
constexpr std::uint32_t kSlack = kStrip + 3;
// Any steeper, and a line with its slack could leave the block.
constexpr std::uint32_t kSteepest = (1u << kFractionBits) - 4;

/**
 * The rays of a fan, each in the frame of a GridRay, each value of all of them together. Values are
 * whole where a GridRay has integers.
 */
struct Rays {
  alignas(64) double sector[kMostRays];
  double along[kMostRays];
  double across[kMostRays];
  double alongPart[kMostRays];
  double acrossPart[kMostRays];
  double last[kMostRays];
  double exit[kMostRays];
  double rise[kMostRays];
  /** What the walk finds: a column, the row after the one where the ray enters it. */
  double column[kMostRays];
  double nextRow[kMostRays];
  /** All bits set for yes, none for no. */
  std::int64_t isHit[kMostRays];
  std::int64_t isHitOnEntry[kMostRays];
  /** The way if it is no hit: infinity, or NaN for what walkStrips must tell. */
  double otherwise[kMostRays];
};

/** The sectors of directions that share a frame, as a sum of these. */
constexpr int kSteep = 1;
constexpr int kAlongReversed = 2;
constexpr int kAcrossReversed = 4;

// The same operations in the same order as aimRay, so that the rays are the same to the last bit.
void aim(const FanCast& fan, const double* cosines, const double* sines, int count, Rays& rays) {
  const Doubles d;
  const auto zero = hn::Zero(d);
  const auto one = hn::Set(d, 1.0);
  const auto scale = hn::Set(d, static_cast<double>(Height{1} << GridRay::kFractionBits));
  const auto cosHeading = hn::Set(d, fan.cosHeading);
  const auto sinHeading = hn::Set(d, fan.sinHeading);
  const auto width = hn::Set(d, fan.width);
  const auto height = hn::Set(d, fan.height);
  const auto startX = hn::Set(d, fan.start.x);
  const auto startY = hn::Set(d, fan.start.y);
  const auto reach = hn::Set(d, fan.reach);
  for (int i = 0; i < count; i += static_cast<int>(hn::Lanes(d))) {
    const auto cosine = hn::LoadU(d, cosines + i);
    const auto sine = hn::LoadU(d, sines + i);
    const auto x = hn::Sub(hn::Mul(cosine, cosHeading), hn::Mul(sine, sinHeading));
    const auto y = hn::Add(hn::Mul(sine, cosHeading), hn::Mul(cosine, sinHeading));

    const auto steep = hn::Gt(hn::Abs(y), hn::Abs(x));
    const auto alongReversed = hn::Lt(hn::IfThenElse(steep, y, x), zero);
    const auto acrossReversed = hn::Lt(hn::IfThenElse(steep, x, y), zero);
    const auto columns = hn::IfThenElse(steep, height, width);
    const auto rows = hn::IfThenElse(steep, width, height);
    const auto startAlong = hn::IfThenElse(steep, startY, startX);
    const auto startAcross = hn::IfThenElse(steep, startX, startY);
    const auto along = hn::IfThenElse(alongReversed, hn::Sub(columns, startAlong), startAlong);
    const auto across = hn::IfThenElse(acrossReversed, hn::Sub(rows, startAcross), startAcross);
    const auto alongPart = hn::Abs(hn::IfThenElse(steep, y, x));
    const auto acrossPart = hn::Abs(hn::IfThenElse(steep, x, y));
    const auto slope = hn::Div(acrossPart, alongPart);

    const auto end = hn::Min(columns, hn::Add(along, hn::Mul(reach, alongPart)));
    const auto top = hn::Add(along, hn::Div(hn::Sub(rows, across), slope));
    const auto last = hn::Min(hn::Sub(columns, one), hn::Add(hn::Floor(hn::Min(end, top)), one));
    const auto toExit = hn::Sub(hn::Add(hn::Floor(along), one), along);
    const auto exit = hn::Add(across, hn::Mul(toExit, slope));

    const auto sector =
        hn::Add(hn::IfThenElseZero(steep, hn::Set(d, kSteep)),
                hn::Add(hn::IfThenElseZero(alongReversed, hn::Set(d, kAlongReversed)),
                        hn::IfThenElseZero(acrossReversed, hn::Set(d, kAcrossReversed))));
    hn::Store(sector, d, rays.sector + i);
    hn::Store(along, d, rays.along + i);
    hn::Store(across, d, rays.across + i);
    hn::Store(alongPart, d, rays.alongPart + i);
    hn::Store(acrossPart, d, rays.acrossPart + i);
    hn::Store(last, d, rays.last + i);
    hn::Store(hn::Mul(exit, scale), d, rays.exit + i);
    hn::Store(hn::Mul(slope, scale), d, rays.rise + i);
  }
}

/** What the rays of a sector share: a frame, and how it lies over an image. */
struct Sector {
  Sector(const FanCast& fan, int flags, double along, double across)
      : steep((flags & kSteep) != 0),
        alongReversed((flags & kAlongReversed) != 0),
        acrossReversed((flags & kAcrossReversed) != 0),
        image(steep ? fan.store->getTurned() : fan.store->getUpright()),
        columns(steep ? fan.height : fan.width),
        rows(steep ? fan.width : fan.height),
        first(static_cast<int>(along)),
        startRow(static_cast<int>(across)),
        columnStep(alongReversed ? -1 : 1),
        columnBase(alongReversed ? columns - 1 : 0),
        rowStep(acrossReversed ? -1 : 1),
        rowBase(acrossReversed ? rows - 1 : 0) {}

  /** The frame's columns and rows as the image has them, and back. */
  int turnColumn(int column) const { return columnBase + columnStep * column; }
  int turnRow(int row) const { return rowBase + rowStep * row; }

  /** In the image, heights fall from column to column. */
  bool falls() const { return alongReversed != acrossReversed; }

  /** Nothing stands in the two cells of the first column that a ray can enter. */
  bool startsFree() const {
    const int column = turnColumn(first);
    return !image.get(column, turnRow(startRow)) &&
           (startRow + 1 == rows || !image.get(column, turnRow(startRow + 1)));
  }

  bool steep;
  bool alongReversed;
  bool acrossReversed;
  const StripImage& image;
  int columns;
  int rows;
  int first;
  int startRow;
  int columnStep;
  int columnBase;
  int rowStep;
  int rowBase;
};

/** The columns of a block in which the line touches a cell that is there; perhaps some more. */
template <typename Vec>
HWY_INLINE std::uint32_t findColumns(const StripImage::Block& block, std::uint32_t low, Vec offsets,
                                     Vec onward, Vec span) {
  const Words d;
  constexpr int kLanes = static_cast<int>(hn::MaxLanes(d));
  auto lowest = hn::Add(hn::Set(d, low), offsets);
  std::uint32_t free = 0;
  for (int column = 0; column < kStrip; column += kLanes) {
    const auto lowestRow = hn::ShiftRight<kFractionBits>(lowest);
    const auto highestRow = hn::ShiftRight<kFractionBits>(hn::Add(lowest, span));
    const auto touched =
        hn::Sub(hn::Shl(hn::Set(d, 2u), highestRow), hn::Shl(hn::Set(d, 1u), lowestRow));
    const auto words = hn::Load(d, block.words.data() + column);
    std::uint16_t bits = 0;
    hn::StoreMaskBits(d, hn::Eq(hn::And(words, touched), hn::Zero(d)),
                      reinterpret_cast<std::uint8_t*>(&bits));
    free |= std::uint32_t{bits} << column;
    lowest = hn::Add(lowest, onward);
  }
  return kAllColumns & ~free;
}

/** Where a ray's walk ended: at the first strip with columns to settle, or, with none, its last. */
struct Stop {
  int strip;
  int group;
  std::uint32_t columns;
};

/**
 * Settles whether the ray meets the nearest of the candidates, or only comes close to its cells: in
 * doubt then.
 */
HWY_INLINE void settle(const Sector& sector, const Stop& stop, Height firstExit, Height rise, int i,
                       Rays& rays) {
  const std::uint32_t none = stop.columns == 0;
  const int lane = sector.alongReversed ? 31 - std::countl_zero(stop.columns | none)
                                        : std::countr_zero(stop.columns | none);
  const int column = sector.turnColumn(kStrip * stop.strip + lane);
  const Height exit = firstExit + (column - sector.first) * rise;
  const int row = GridRay::rowFrom(exit - rise);
  const std::uint32_t crosses = GridRay::rowBelow(exit) > row;
  const std::uint32_t word =
      sector.image.getBlock(stop.strip, stop.group).words[static_cast<std::size_t>(lane)];
  const int bottom = StripImage::kGroupRows * stop.group;
  const std::uint32_t onEntry = word >> ((sector.turnRow(row) - bottom) & 31) & 1u;
  const std::uint32_t onNext = word >> ((sector.turnRow(row + 1) - bottom) & 31) & crosses;
  const std::uint32_t candidate = (column <= static_cast<int>(rays.last[i])) & ~none;
  const std::uint32_t steep = (rise >> kDroppedBits) > kSteepest;
  const std::uint32_t isHit = candidate & (onEntry | onNext) & ~steep;
  rays.column[i] = column;
  rays.nextRow[i] = row + 1;
  rays.isHit[i] = -static_cast<std::int64_t>(isHit);
  rays.isHitOnEntry[i] = -static_cast<std::int64_t>(onEntry);
  rays.otherwise[i] = (candidate | steep) != 0 ? kDoubtful : kNever;
}

/** Finds what the rays from `begin` to `end`, all of one sector, hit. */
void walk(const FanCast& fan, int begin, int end, Rays& rays) {
  const Sector sector(fan, static_cast<int>(rays.sector[begin]), rays.along[begin],
                      rays.across[begin]);
  if (!sector.startsFree()) {
    std::fill(rays.isHit + begin, rays.isHit + end, 0);
    std::fill(rays.otherwise + begin, rays.otherwise + end, kDoubtful);
    return;
  }
  const Words d;
  constexpr auto kLanes = static_cast<std::uint32_t>(hn::MaxLanes(d));
  // A column's place in its strip, counted from the lower end of the line.
  const auto rank =
      sector.falls() ? hn::Sub(hn::Set(d, kStrip - 1u), hn::Iota(d, 0)) : hn::Iota(d, 0);
  const auto toNextLanes = hn::Set(d, sector.falls() ? 0u - kLanes : kLanes);

  const int from = sector.turnColumn(sector.first);
  const int firstStrip = from / kStrip;
  const std::uint32_t ahead = sector.alongReversed
                                  ? (1u << from % kStrip) - 1u
                                  : kAllColumns & (kAllColumns << from % kStrip << 1);
  // The lower end of the line over the first strip, as rises from where it leaves its first column.
  const int nearEdge =
      sector.alongReversed ? sector.columns - kStrip * (firstStrip + 1) : kStrip * firstStrip;
  const Height toLowEnd = nearEdge + (sector.acrossReversed ? kStrip : 0) - sector.first - 1;
  const Height bottom =
      (sector.acrossReversed ? Height{sector.rows} << GridRay::kFractionBits : 0) -
      (Height{1} << kDroppedBits);
  for (int i = begin; i < end; ++i) {
    const auto exit = static_cast<Height>(rays.exit[i]);
    const auto rise = static_cast<Height>(rays.rise[i]);
    const auto shortRise = static_cast<std::uint32_t>(rise >> kDroppedBits);
    const auto rises = hn::Set(d, shortRise);
    const auto offsets = hn::Mul(rank, rises);
    const auto onward = hn::Mul(toNextLanes, rises);
    const auto span = hn::Add(rises, hn::Set(d, kSlack));
    const int lastStrip = sector.turnColumn(static_cast<int>(rays.last[i])) / kStrip;
    const Height advance = sector.rowStep * (kStrip * rise);
    Height low = bottom + sector.rowStep * (exit + toLowEnd * rise);
    Stop stop{firstStrip, 0, ahead};
    while (true) {
      stop.group = static_cast<int>(low >> kGroupShift);
      stop.columns &= findColumns(sector.image.getBlock(stop.strip, stop.group),
                                  static_cast<std::uint32_t>(low >> kDroppedBits) & kInGroup,
                                  offsets, onward, span);
      if (stop.columns != 0 || stop.strip == lastStrip) break;
      stop.strip += sector.columnStep;
      stop.columns = kAllColumns;
      low += advance;
    }
    settle(sector, stop, exit, rise, i, rays);
  }
}

/** The ways to what the rays hit. */
void measure(const Rays& rays, int count, double* ways) {
  const Doubles d;
  const hn::RebindToSigned<Doubles> dInt;
  const auto zero = hn::Zero(d);
  for (int i = 0; i < count; i += static_cast<int>(hn::Lanes(d))) {
    const auto along = hn::Load(d, rays.along + i);
    const auto alongPart = hn::Load(d, rays.alongPart + i);
    const auto column = hn::Load(d, rays.column + i);
    const auto nextColumn = hn::Add(column, hn::Set(d, 1.0));
    const auto enters = hn::Max(zero, hn::Div(hn::Sub(column, along), alongPart));
    const auto leaves = hn::Max(zero, hn::Div(hn::Sub(nextColumn, along), alongPart));
    const auto rises = hn::Div(hn::Sub(hn::Load(d, rays.nextRow + i), hn::Load(d, rays.across + i)),
                               hn::Load(d, rays.acrossPart + i));
    const auto onEntry = hn::MaskFromVec(hn::BitCast(d, hn::Load(dInt, rays.isHitOnEntry + i)));
    const auto isHit = hn::MaskFromVec(hn::BitCast(d, hn::Load(dInt, rays.isHit + i)));
    const auto way = hn::IfThenElse(onEntry, enters, hn::Min(hn::Max(rises, enters), leaves));
    hn::StoreU(hn::IfThenElse(isHit, way, hn::Load(d, rays.otherwise + i)), d, ways + i);
  }
}

void castRays(const FanCast& fan, const double* cosines, const double* sines, int count,
              double* ways) {
  Rays rays;
  aim(fan, cosines, sines, count, rays);
  for (int begin = 0; begin < count;) {
    int end = begin + 1;
    while (end < count && rays.sector[end] == rays.sector[begin]) ++end;
    walk(fan, begin, end, rays);
    begin = end;
  }
  measure(rays, count, ways);
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace QV::detail
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace QV::detail {
namespace {

HWY_EXPORT(castRays);

void castRaysBest(const FanCast& fan, const double* cosines, const double* sines, int count,
                  double* ways) {
  HWY_DYNAMIC_DISPATCH(castRays)(fan, cosines, sines, count, ways);
}

}  // namespace

CastRays* findCastRays(ScanPath path) {
  // Asked once: the processor takes its time to answer.
  static const std::int64_t vectors = hwy::SupportedTargets() & ~(HWY_SCALAR | HWY_EMU128);
  if (path == ScanPath::best && vectors != 0) return castRaysBest;
#if HWY_TARGETS & HWY_AVX2
  if (path == ScanPath::avx2 && (vectors & HWY_AVX2) != 0) return N_AVX2::castRays;
#endif
  return nullptr;
}

}  // namespace QV::detail
#endif
