#include "platform/navigation/fan_cast.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>

#include "platform/navigation/fan_sector.h"
#include "platform/navigation/grid_ray.h"

// Vectors without a fixed size can be no members; such machines have others as well.
#define HWY_DISABLED_TARGETS (HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128 | HWY_RVV)
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
typedef hn::RebindToUnsigned<Doubles> Bits;

constexpr double kNever = std::numeric_limits<double>::infinity();
constexpr double kDoubtful = std::numeric_limits<double>::quiet_NaN();
constexpr double kOne = static_cast<double>(Height{1} << GridRay::kFractionBits);
constexpr int kStrip = StripImage::kStripColumns;

// Rays that go ahead together, and the strips that they have to cross for it to pay.
constexpr int kTogether = 8;
constexpr int kFewestStrips = 6;

// Heights within a block: 5 bits of rows, the rest for the fraction. What a height and the rises
// that follow it lose by that is less than kSlack in the last place.
constexpr int kFractionBits = 27;
constexpr int kDroppedBits = GridRay::kFractionBits - kFractionBits;
constexpr int kGroupShift = GridRay::kFractionBits + StripImage::kGroupBits;
constexpr std::uint32_t kInGroup = (1u << (kFractionBits + StripImage::kGroupBits)) - 1;
constexpr std::uint32_t kSlack = kStrip + 3;
// Any steeper, and the line with its slack could leave the block.
constexpr Height kSteepest = (Height{1} << GridRay::kFractionBits) - (Height{4} << kDroppedBits);

/** The rays of a fan, each value of all of them together. */
struct Rays {
  static constexpr int kSize = FanCast::kMostRays + FanCast::kMore;

  alignas(64) double x[kSize];
  double y[kSize];
  std::uint64_t sector[kSize];
  double perColumn[kSize];
  double acrossPart[kSize];
  double last[kSize];
  /** The way of what is no hit: infinite, or in doubt. */
  double otherwise[kSize];
  /** Heights, whole or not, of a GridRay and of the line's low end over its first strip. */
  double exit[kSize];
  double rise[kSize];
  double low[kSize];
  /** In the image. What is before the first is known to be free. */
  double firstStrip[kSize];
  std::int32_t lastStrip[kSize];
  /** What the walk finds: a column of the image, its word in a block (or 0), and row 0's bit. */
  std::int32_t column[kSize];
  std::uint32_t word[kSize];
  std::int32_t bitBase[kSize];
  /** Whole heights. */
  Height wholeExit[kSize];
  Height wholeRise[kSize];
};

int groupOf(Height height) {
  return static_cast<int>(height >> kGroupShift);
}

std::uint32_t heightInGroup(Height height) {
  return static_cast<std::uint32_t>(height >> kDroppedBits) & kInGroup;
}

/** As bits, counted from where it starts, the most rows that what is so high can lie in. */
std::uint32_t rowsOf(std::uint32_t height) {
  return (4u << (height >> kFractionBits)) - 1;
}

/** The rows that heights within a block lie in, as bits. */
std::uint32_t rowsBetween(std::uint32_t low, std::uint32_t high) {
  return (2u << (high >> kFractionBits)) - (1u << (low >> kFractionBits));
}

// Finds the columns of a block in which a line touches a cell that is there, or comes within kSlack
// of it. The line is given by its height where it is lowest, at an edge of the strip.
#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

/** Four columns at a time, and of these only the first with any. */
class ColumnFinder {
 public:
  explicit ColumnFinder(const FanSector& sector)
      : back(sector.alongReversed), falls(sector.falls()) {}

  void setRise(std::uint32_t perColumn) { rise = perColumn; }

  std::uint32_t find(const StripImage::Block& block, std::uint32_t low,
                     std::uint32_t wanted) const {
    const bool fromTop = back != falls;
    std::uint32_t height = fromTop ? low + (kStrip - kQuad) * rise : low;
    unsigned quad = back ? kStrip - kQuad : 0;
    for (unsigned i = 0; i < kStrip / kQuad; ++i) {
      const std::uint32_t* const words = &block.words[quad];
      const std::uint32_t any = words[0] | words[1] | words[2] | words[3];
      if ((any & rowsBetween(height, height + kQuad * rise + kSlack)) != 0) {
        const std::uint32_t found = xFindInQuad(words, height) << quad & wanted;
        if (found != 0) return found;
      }
      height += fromTop ? 0u - kQuad * rise : kQuad * rise;
      quad += back ? 0u - kQuad : kQuad;
    }
    return 0;
  }

 private:
  static constexpr unsigned kQuad = 4;

  std::uint32_t xFindInQuad(const std::uint32_t* words, std::uint32_t low) const {
    std::uint32_t height = falls ? low + (kQuad - 1) * rise : low;
    std::uint32_t found = 0;
    for (unsigned i = 0; i < kQuad; ++i) {
      const std::uint32_t row = height >> kFractionBits;
      const std::uint32_t crosses = ((height + rise + kSlack) >> kFractionBits) - row;
      // One row, or with those that it crosses two or three.
      const bool touches = (words[i] >> row & (3 * crosses | 1)) != 0;
      found |= std::uint32_t{touches} << i;
      height += falls ? 0u - rise : rise;
    }
    return found;
  }

  bool back;
  bool falls;
  std::uint32_t rise = 0;
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

  HWY_INLINE void setRise(std::uint32_t perColumn) {
    const Words d;
    const auto rise = hn::Set(d, perColumn);
    offsets = hn::Mul(rank, rise);
    onward = hn::Mul(lanesOnward, rise);
    span = hn::Add(rise, hn::Set(d, kSlack));
  }

  HWY_INLINE std::uint32_t find(const StripImage::Block& block, std::uint32_t low,
                                std::uint32_t wanted) const {
    const Words d;
    std::uint32_t free = 0;
    auto lowest = hn::Add(hn::Set(d, low), offsets);
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
  typedef hn::CappedTag<std::uint32_t, kStrip> Words;
  static constexpr auto kLanes = static_cast<unsigned>(hn::MaxLanes(Words()));

  /** A lane's place counted from the low end of the line. */
  hn::Vec<Words> rank;
  hn::Vec<Words> lanesOnward;
  /** Of a ray: the lanes' heights above the low end, to those of the next lanes, and their own. */
  hn::Vec<Words> offsets;
  hn::Vec<Words> onward;
  hn::Vec<Words> span;
};

#endif

/** The flag where a value is below zero. */
template <int kFlag>
HWY_INLINE hn::Vec<Bits> flagNegative(hn::Vec<Doubles> value) {
  const Bits d;
  // Negative zero plus zero has no sign.
  const auto bits = hn::BitCast(d, hn::Add(value, hn::Zero(Doubles())));
  constexpr int kToFlag = 63 - std::countr_zero(static_cast<unsigned>(kFlag));
  return hn::And(hn::ShiftRight<kToFlag>(bits), hn::Set(d, kFlag));
}

/** Turns the directions by the heading, and sorts them into sectors. */
void turn(const FanCast& fan, const double* cosines, const double* sines, int count, Rays& rays) {
  const Doubles d;
  const Bits dBits;
  const auto cosHeading = hn::Set(d, fan.cosHeading);
  const auto sinHeading = hn::Set(d, fan.sinHeading);
  for (int i = 0; i < count; i += static_cast<int>(hn::Lanes(d))) {
    const auto cosine = hn::LoadU(d, cosines + i);
    const auto sine = hn::LoadU(d, sines + i);
    const auto x = hn::Sub(hn::Mul(cosine, cosHeading), hn::Mul(sine, sinHeading));
    const auto y = hn::Add(hn::Mul(sine, cosHeading), hn::Mul(cosine, sinHeading));
    const auto steep = hn::Gt(hn::Abs(y), hn::Abs(x));
    const auto isSteep = hn::BitCast(dBits, hn::VecFromMask(d, steep));
    const auto sector =
        hn::Or(hn::And(isSteep, hn::Set(dBits, FanSector::kSteep)),
               hn::Or(flagNegative<FanSector::kAlongReversed>(hn::IfThenElse(steep, y, x)),
                      flagNegative<FanSector::kAcrossReversed>(hn::IfThenElse(steep, x, y))));
    hn::Store(x, d, rays.x + i);
    hn::Store(y, d, rays.y + i);
    hn::Store(sector, dBits, rays.sector + i);
  }
}

/** How the lines of a sector's rays lie over the first strip, where all of them start. */
struct Approach {
  explicit Approach(const FanSector& sector)
      : from(sector.turnColumn(sector.first)),
        firstStrip(from / kStrip),
        floor((sector.acrossReversed ? sector.rows * kOne : 0.0) - kMargin) {
    const int nearEdge =
        sector.alongReversed ? sector.columns - kStrip * (firstStrip + 1) : kStrip * firstStrip;
    toLowEnd = nearEdge + (sector.acrossReversed ? kStrip : 0) - sector.first - 1;
  }

  static constexpr double kMargin = Height{1} << kDroppedBits;

  int from;
  int firstStrip;
  /** The height of the image's lowest row, and a little less. */
  double floor;
  /** In rises, from where a ray leaves its first column to its low end over the strip. */
  double toLowEnd;
};

// The operations of aimRay in their order, so that the lines are the same to the last bit; but low
// may be off by much less than the margin.
void aim(const FanCast& fan, const FanSector& sector, const Approach& approach, int begin, int end,
         Rays& rays) {
  const Doubles d;
  const hn::Rebind<std::int32_t, Doubles> d32;
  const auto one = hn::Set(d, 1.0);
  const auto along = hn::Set(d, sector.along);
  const auto across = hn::Set(d, sector.across);
  const auto lastColumn = hn::Set(d, sector.columns - 1);
  const auto rowsAbove = hn::Set(d, sector.rows - sector.across);
  const auto toExit = hn::Set(d, sector.first + 1 - sector.along);
  const auto reach = hn::Set(d, fan.reach);
  const bool staysBelowTop = fan.reach + 1.0 < sector.rows - sector.across;
  const double* const alongParts = sector.steep ? rays.y : rays.x;
  const double* const acrossParts = sector.steep ? rays.x : rays.y;
  for (int i = begin; i < end; i += static_cast<int>(hn::Lanes(d))) {
    const auto alongPart = hn::Abs(hn::LoadU(d, alongParts + i));
    const auto acrossPart = hn::Abs(hn::LoadU(d, acrossParts + i));
    const auto slope = hn::Div(acrossPart, alongPart);
    auto reached = hn::Add(along, hn::Mul(reach, alongPart));
    if (!staysBelowTop) reached = hn::Min(reached, hn::Add(along, hn::Div(rowsAbove, slope)));
    const auto farthest = hn::Min(lastColumn, hn::Add(reached, one));
    const auto exit = hn::Mul(hn::Add(across, hn::Mul(toExit, slope)), hn::Set(d, kOne));
    const auto rise = hn::Mul(slope, hn::Set(d, kOne));
    const auto tooSteep = hn::Gt(rise, hn::Set(d, static_cast<double>(kSteepest)));
    const auto last = hn::IfThenElse(tooSteep, hn::Set(d, sector.first), farthest);
    const auto toLow = hn::Add(exit, hn::Mul(hn::Set(d, approach.toLowEnd), rise));
    const auto low =
        hn::Add(hn::Set(d, approach.floor), hn::Mul(hn::Set(d, sector.rowStep), toLow));
    const auto turnedLast =
        hn::Add(hn::Set(d32, sector.columnBase),
                hn::Mul(hn::Set(d32, sector.columnStep), hn::DemoteTo(d32, last)));
    hn::StoreU(hn::Div(one, alongPart), d, rays.perColumn + i);
    hn::StoreU(acrossPart, d, rays.acrossPart + i);
    hn::StoreU(last, d, rays.last + i);
    hn::StoreU(hn::IfThenElse(tooSteep, hn::Set(d, kDoubtful), hn::Set(d, kNever)), d,
               rays.otherwise + i);
    hn::StoreU(exit, d, rays.exit + i);
    hn::StoreU(rise, d, rays.rise + i);
    hn::StoreU(low, d, rays.low + i);
    hn::StoreU(hn::Set(d, approach.firstStrip), d, rays.firstStrip + i);
    hn::StoreU(hn::ShiftRight<StripImage::kStripBits>(turnedLast), d32, rays.lastStrip + i);
  }
}

/** What lies between the lines of two rays of a sector, strip by strip: a range of heights. */
class Wedge {
 public:
  Wedge(const FanSector& sector, const Rays& rays, int one, int other)
      : flattest(std::min(rays.rise[one], rays.rise[other])),
        steepest(std::max(rays.rise[one], rays.rise[other])),
        lowest(static_cast<Height>(std::min(rays.low[one], rays.low[other]))),
        highest(static_cast<Height>(std::max(rays.low[one] + kStrip * rays.rise[one],
                                             rays.low[other] + kStrip * rays.rise[other]))) {
    highest += Height{kSlack} << kDroppedBits;
    const Height least = kStrip * static_cast<Height>(flattest);
    const Height most = kStrip * static_cast<Height>(steepest);
    lowAdvance = sector.rowStep > 0 ? least : -most;
    highAdvance = sector.rowStep > 0 ? most : -least;
  }

  /** False, too, where it is too wide to tell. */
  bool isFree(const StripImage::View& image, int strip) const {
    const int row = GridRay::rowFrom(lowest);
    const int more = GridRay::rowFrom(highest) - row;
    return more < StripImage::kRowsSeen &&
           (image.getUsedRows(strip, row) & ((std::uint64_t{2} << more) - 1)) == 0;
  }

  void fetch(const StripImage::View& image, int strip) const {
    image.fetchBlock(strip, groupOf(lowest));
    image.fetchBlock(strip, groupOf(highest));
  }

  void advance() {
    lowest += lowAdvance;
    highest += highAdvance;
  }

  HWY_INLINE hn::Mask<Doubles> holds(hn::Vec<Doubles> rise) const {
    const Doubles d;
    return hn::And(hn::Ge(rise, hn::Set(d, flattest)), hn::Le(rise, hn::Set(d, steepest)));
  }

 private:
  double flattest;
  double steepest;
  Height lowest;
  Height highest;
  Height lowAdvance;
  Height highAdvance;
};

/** Has these rays, first to last, begin some strips further on. */
HWY_INLINE void putAhead(const FanSector& sector, const Wedge& wedge, int first, int last,
                         int strips, Rays& rays) {
  const Doubles d;
  static_assert(kTogether % hn::MaxLanes(Doubles()) == 0, "no lane is another bundle's");
  const double strip = rays.firstStrip[first] + sector.columnStep * strips;
  const int nearEdge = kStrip * static_cast<int>(strip) + (sector.alongReversed ? kStrip - 1 : 0);
  const auto column = hn::Set(d, sector.turnColumn(nearEdge));
  const auto advance = hn::Set(d, sector.rowStep * kStrip * strips);
  for (int i = first; i <= last; i += static_cast<int>(hn::Lanes(d))) {
    const auto rise = hn::LoadU(d, rays.rise + i);
    const auto low = hn::LoadU(d, rays.low + i);
    const auto from = hn::LoadU(d, rays.firstStrip + i);
    // By rounding, a ray may lie outside or end before.
    const auto goes = hn::And(wedge.holds(rise), hn::Ge(hn::LoadU(d, rays.last + i), column));
    const auto risen = hn::IfThenElseZero(goes, hn::Mul(hn::Trunc(rise), advance));
    hn::StoreU(hn::Add(low, risen), d, rays.low + i);
    hn::StoreU(hn::IfThenElse(goes, hn::Set(d, strip), from), d, rays.firstStrip + i);
  }
}

/** Has neighbouring rays pass together the strips where nothing stands between them. */
HWY_NOINLINE void goAhead(const FanSector& sector, int begin, int end, Rays& rays) {
  const StripImage::View image(sector.image);
  const int step = sector.columnStep;
  for (int first = begin; first < end; first += kTogether) {
    const int last = std::min(first + kTogether, end) - 1;
    const int start = static_cast<int>(rays.firstStrip[first]);
    const int most =
        std::min(step * rays.lastStrip[first], step * rays.lastStrip[last]) - step * start;
    Wedge wedge(sector, rays, first, last);
    int strips = 0;
    for (; strips < most && wedge.isFree(image, start + step * strips); ++strips) wedge.advance();
    if (strips == 0) continue;
    wedge.fetch(image, start + step * strips);
    putAhead(sector, wedge, first, last, strips, rays);
  }
}

/** Where a walk ends: in the first strip with columns to settle or, if none has any, the last. */
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

/** Where some rays cross the columns that the walk found. */
struct Crossing {
  hn::Vec<Doubles> column;
  /** The row after the one where a ray enters the column. */
  hn::Vec<Doubles> nextRow;
  /** Whether the walk found any; whether a cell stands where the ray enters, and where it goes on
   * to the next row, if it does. */
  hn::Mask<Doubles> isAny;
  hn::Mask<Doubles> hitsOnEntry;
  hn::Mask<Doubles> hitsNext;
};

/** Whether bit `bit` of each word is set; a bit that is none wraps around to one. */
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

HWY_INLINE Crossing cross(const FanSector& sector, const Rays& rays, int i) {
  const Bits d;
  const hn::RebindToSigned<Doubles> dHeight;
  const hn::Rebind<std::int32_t, Doubles> dInt;
  const hn::Rebind<std::uint32_t, Doubles> dWord;
  const auto column =
      hn::Add(hn::Set(dInt, sector.columnBase),
              hn::Mul(hn::Set(dInt, sector.columnStep), hn::LoadU(dInt, rays.column + i)));
  const auto columnsOn = hn::PromoteTo(dHeight, hn::Sub(column, hn::Set(dInt, sector.first)));
  const auto rise = hn::LoadU(dHeight, rays.wholeRise + i);
  const auto exit = hn::Add(hn::LoadU(dHeight, rays.wholeExit + i), hn::Mul(columnsOn, rise));
  const auto row = hn::ShiftRight<GridRay::kFractionBits>(hn::BitCast(d, hn::Sub(exit, rise)));
  const auto nextRow = hn::Add(row, hn::Set(d, 1));
  const auto nextHeight = hn::BitCast(dHeight, hn::ShiftLeft<GridRay::kFractionBits>(nextRow));
  const auto backwards = hn::Set(d, sector.acrossReversed ? ~std::uint64_t{0} : 0);
  const auto turned = hn::Sub(hn::Xor(row, backwards), backwards);
  const auto bit =
      hn::Add(turned, hn::BitCast(d, hn::PromoteTo(dHeight, hn::LoadU(dInt, rays.bitBase + i))));
  const auto nextBit = hn::Add(bit, hn::Or(backwards, hn::Set(d, 1)));
  const auto words = hn::PromoteTo(d, hn::LoadU(dWord, rays.word + i));
  const auto crosses = hn::RebindMask(Doubles(), hn::Gt(exit, nextHeight));
  const auto isAny = hn::RebindMask(Doubles(), hn::Ne(words, hn::Zero(d)));
  return {hn::PromoteTo(Doubles(), column), toDouble(nextRow), isAny, hasBit(words, bit),
          hn::And(crosses, hasBit(words, nextBit))};
}

/**
 * Settles whether rays meet what the walk found, or only come near: in doubt then. Measures their
 * ways as GridRay does. Tells whether any is in doubt.
 */
bool settle(const FanSector& sector, const Rays& rays, int begin, int end, double* ways) {
  const Doubles d;
  const auto along = hn::Set(d, sector.along);
  const auto across = hn::Set(d, sector.across);
  auto doubts = hn::MaskFromVec(hn::Zero(d));
  for (int i = begin; i < end; i += static_cast<int>(hn::Lanes(d))) {
    const Crossing found = cross(sector, rays, i);
    const auto perColumn = hn::LoadU(d, rays.perColumn + i);
    const auto nextColumn = hn::Add(found.column, hn::Set(d, 1.0));
    const auto enters = hn::Mul(hn::Sub(found.column, along), perColumn);
    const auto leaves = hn::Mul(hn::Sub(nextColumn, along), perColumn);
    const auto rises = hn::Div(hn::Sub(found.nextRow, across), hn::LoadU(d, rays.acrossPart + i));
    const auto onNext = hn::Min(hn::Max(rises, enters), leaves);
    const auto way = hn::IfThenElse(found.hitsOnEntry, enters, onNext);
    const auto isHit = hn::Or(found.hitsOnEntry, found.hitsNext);
    const auto isNear = hn::And(found.isAny, hn::Le(found.column, hn::LoadU(d, rays.last + i)));
    const auto result = hn::IfThenElse(isNear, hn::IfThenElse(isHit, way, hn::Set(d, kDoubtful)),
                                       hn::LoadU(d, rays.otherwise + i));
    const auto isRay = hn::FirstN(d, static_cast<std::size_t>(end - i));
    doubts = hn::Or(doubts, hn::And(isRay, hn::IsNaN(result)));
    hn::StoreU(result, d, ways + i);
  }
  return !hn::AllFalse(d, doubts);
}

/** Has rays end in the cell where they start, or in the one across which they leave its column. */
void checkFirstColumn(const FanSector& sector, int begin, int end, const Rays& rays, double* ways) {
  const bool onEntry = sector.has(sector.first, sector.firstRow);
  if (!onEntry && !sector.has(sector.first, sector.firstRow + 1)) return;
  for (int i = begin; i < end; ++i) {
    if (onEntry) {
      ways[i] = 0.0;
    } else if (GridRay::rowBelow(rays.wholeExit[i]) > sector.firstRow) {
      const double rises = (sector.firstRow + 1 - sector.across) / rays.acrossPart[i];
      ways[i] = std::min(rises, (sector.first + 1 - sector.along) * rays.perColumn[i]);
    }
  }
}

/** Bit i is set when ray i is the last of those in its sector. */
std::uint64_t findLasts(const Rays& rays, int count) {
  const Bits d;
  std::uint64_t lasts = 0;
  for (int i = 0; i < count; i += static_cast<int>(hn::Lanes(d))) {
    const auto isLast = hn::Ne(hn::LoadU(d, rays.sector + i), hn::LoadU(d, rays.sector + i + 1));
    std::uint8_t bits = 0;
    hn::StoreMaskBits(d, isLast, &bits);
    lasts |= std::uint64_t{bits} << i;
  }
  return lasts | std::uint64_t{1} << (count - 1);
}

bool castRays(const FanCast& fan, const double* cosines, const double* sines, int count,
              double* ways) {
  Rays rays;
  turn(fan, cosines, sines, count, rays);
  std::uint64_t lasts = findLasts(rays, count);
  bool isDoubtful = false;
  for (int begin = 0; begin < count; lasts &= lasts - 1) {
    const int end = static_cast<int>(hwy::Num0BitsBelowLS1Bit_Nonzero64(lasts)) + 1;
    const FanSector sector(fan, static_cast<int>(rays.sector[begin]));
    const Approach approach(sector);
    aim(fan, sector, approach, begin, end, rays);
    if (std::abs(rays.lastStrip[begin] - approach.firstStrip) < kFewestStrips &&
        std::abs(rays.lastStrip[end - 1] - approach.firstStrip) < kFewestStrips) {
      walk<false>(sector, approach, begin, end, rays);
    } else {
      goAhead(sector, begin, end, rays);
      walk<true>(sector, approach, begin, end, rays);
    }
    isDoubtful |= settle(sector, rays, begin, end, ways);
    checkFirstColumn(sector, begin, end, rays, ways);
    begin = end;
  }
  return isDoubtful;
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace QV::detail
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace QV::detail {
namespace {

HWY_EXPORT(castRays);

bool castRaysBest(const FanCast& fan, const double* cosines, const double* sines, int count,
                  double* ways) {
  return HWY_DYNAMIC_DISPATCH(castRays)(fan, cosines, sines, count, ways);
}

// Asking the processor costs as much as some rays.
bool hasTarget(std::int64_t target) {
  static const std::int64_t supported = hwy::SupportedTargets();
  return (supported & target) != 0;
}

CastRays* findSse4() {
#if HWY_TARGETS & HWY_SSE4
  if (hasTarget(HWY_SSE4)) return N_SSE4::castRays;
#endif
  return nullptr;
}

CastRays* findAvx2() {
#if HWY_TARGETS & HWY_AVX2
  if (hasTarget(HWY_AVX2)) return N_AVX2::castRays;
#endif
  return nullptr;
}

}  // namespace

CastRays* findCastRays(ScanPath path) {
  switch (path) {
    case ScanPath::best:
      return castRaysBest;
    case ScanPath::scalar:
      return HWY_STATIC_DISPATCH(castRays);
    case ScanPath::sse4:
      return findSse4();
    case ScanPath::avx2:
      return findAvx2();
    case ScanPath::plain:
      break;
  }
  return nullptr;
}

}  // namespace QV::detail

#endif  // HWY_ONCE
