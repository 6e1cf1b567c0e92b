#include "platform/vision/internal/run_finder.h"

#include <algorithm>
#include <bit>
#include <numeric>
#include <utility>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/vision/internal/run_finder.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace QV::detail {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using vision::ComponentRuns;

constexpr int kWordBits = 64;
// Zeros before a row, so that its first pixel has an invalid neighbour on the left.
constexpr std::size_t kMargin = 32;
// Positions are written four at a time.
constexpr std::size_t kSlack = 3;

using Pixels = hn::CappedTag<std::uint16_t, 32>;
using Labels = hn::CappedTag<std::int32_t, 8>;

/**
 * The bits of 64 pixels: which are valid, and which are near to the one on their left and above.
 */
struct Word {
  std::uint64_t valid = 0;
  std::uint64_t nearLeft = 0;
  std::uint64_t nearAbove = 0;
};

template <typename Mask>
HWY_INLINE std::uint64_t bitsOf(Mask mask) {
  std::uint64_t bits = 0;
#if HWY_TARGET <= HWY_AVX3
  hn::StoreMaskBits(Pixels(), mask, reinterpret_cast<std::uint8_t*>(&bits));
#else
  // The mask goes through bytes, because mask bits of wider lanes are slow on these processors.
  const hn::RebindToSigned<Pixels> d;
  const hn::Rebind<std::int8_t, Pixels> d8;
  const auto bytes = hn::DemoteTo(d8, hn::BitCast(d, hn::VecFromMask(Pixels(), mask)));
  hn::StoreMaskBits(d8, hn::MaskFromVec(bytes), reinterpret_cast<std::uint8_t*>(&bits));
#endif
  return bits;
}

template <typename Vec>
HWY_INLINE auto isNear(Vec a, Vec b, Vec limit) {
  const auto difference = hn::Or(hn::SaturatedSub(a, b), hn::SaturatedSub(b, a));
  return hn::Eq(hn::SaturatedSub(difference, limit), hn::Zero(Pixels()));
}

template <typename Vec>
HWY_INLINE Word compare(const std::uint16_t* pixels, const std::uint16_t* above, Vec limit) {
  const Pixels d;
  const int lanes = static_cast<int>(hn::Lanes(d));
  const auto zero = hn::Zero(d);
  Word word;
  std::uint64_t invalid = 0;
  for (int i = 0; i < kWordBits; i += lanes) {
    const auto here = hn::LoadU(d, pixels + i);
    invalid |= bitsOf(hn::Eq(here, zero)) << i;
    word.nearLeft |= bitsOf(isNear(here, hn::LoadU(d, pixels + i - 1), limit)) << i;
    word.nearAbove |= bitsOf(isNear(here, hn::LoadU(d, above + i), limit)) << i;
  }
  word.valid = ~invalid;
  return word;
}

/** The bits one pixel further right; `carry` takes the last bit on to the next word. */
HWY_INLINE std::uint64_t shiftRight(std::uint64_t bits, std::uint64_t& carry) {
  const std::uint64_t shifted = (bits << 1) | carry;
  carry = bits >> (kWordBits - 1);
  return shifted;
}

HWY_INLINE int* writePositions(std::uint64_t bits, int first, int* out) {
  int* const end = out + std::popcount(bits);
  while (bits != 0) {
    for (int i = 0; i < 4; ++i) {
      *out++ = first + std::countr_zero(bits);
      bits &= bits - 1;
    }
  }
  return end;
}

HWY_INLINE int rootOf(int* parents, int run) {
  while (parents[run] != run) run = parents[run] = parents[parents[run]];
  return run;
}

/**
 * Finds where runs start and end, and where they meet those of the row above. True if the last one
 * does not end before the words do.
 */
HWY_INLINE bool compareRow(RowBits& row, const RowBits& above, std::uint16_t maxDifference) {
  const auto limit = hn::Set(Pixels(), maxDifference);
  std::uint64_t lastValid = 0;
  std::uint64_t lastLinked = 0;
  for (std::size_t i = 0; i < row.valid.size(); ++i) {
    const std::size_t first = kMargin + i * kWordBits;
    const Word word = compare(row.pixels.data() + first, above.pixels.data() + first, limit);
    const std::uint64_t afterValid = shiftRight(word.valid, lastValid);
    const std::uint64_t continued = word.valid & afterValid & word.nearLeft;
    const std::uint64_t starts = word.valid & ~continued;
    const std::uint64_t linked = word.valid & above.valid[i] & word.nearAbove;
    // A link is skipped if the pixel to the left links the same two runs.
    const std::uint64_t known = shiftRight(linked, lastLinked) & ~starts & ~above.starts[i];
    row.valid[i] = word.valid;
    row.starts[i] = starts;
    row.ends[i] = afterValid & ~continued;
    row.links[i] = linked & ~known;
  }
  return lastValid != 0;
}

/** Returns the number of the last run that starts at one of these pixels, or else before them. */
HWY_INLINE int lastRun(const RowBits& row, std::size_t word, std::uint64_t pixels) {
  return row.firstRuns[word] - 1 + std::popcount(row.starts[word] & pixels);
}

/** Joins the runs of two rows that meet at the links of a word. */
HWY_INLINE void join(const RowBits& row, const RowBits& above, std::size_t word, int* parents) {
  for (std::uint64_t links = row.links[word]; links != 0; links &= links - 1) {
    const std::uint64_t upToFirst = links ^ (links - 1);
    const int run = rootOf(parents, lastRun(row, word, upToFirst));
    const int runAbove = rootOf(parents, lastRun(above, word, upToFirst));
    parents[std::max(run, runAbove)] = std::min(run, runAbove);
  }
}

// Step by step over the whole row: a wrong guess in the later ones does not wait for the pixels.
void findRowRuns(RowBits& row, const RowBits& above, std::uint16_t maxDifference,
                 ComponentRuns& runs) {
  const bool reachesEnd = compareRow(row, above, maxDifference);
  const std::size_t words = row.valid.size();
  int* const begins = runs.begins.data();
  int* nextBegin = begins + runs.count;
  int* nextEnd = runs.ends.data() + runs.count;
  for (std::size_t i = 0; i < words; ++i) {
    const int x = static_cast<int>(i) * kWordBits;
    row.firstRuns[i] = static_cast<int>(nextBegin - begins);
    nextBegin = writePositions(row.starts[i], x, nextBegin);
    nextEnd = writePositions(row.ends[i], x, nextEnd);
  }
  if (reachesEnd) *nextEnd = static_cast<int>(words) * kWordBits;
  const int firstRun = static_cast<int>(runs.count);
  runs.count = static_cast<std::size_t>(nextBegin - begins);
  int* const parents = runs.labels.data();
  std::iota(parents + firstRun, parents + runs.count, firstRun);
  for (std::size_t i = 0; i < words; ++i) join(row, above, i, parents);
}

int numberComponents(ComponentRuns& runs) {
  int* const labels = runs.labels.data();
  int count = 0;
  for (int run = 0, end = static_cast<int>(runs.count); run < end; ++run) {
    // A parent comes before its children, the first run of a component before all others.
    const int parent = labels[run];
    const bool isFirst = parent == run;
    count += isFirst ? 1 : 0;
    const int known = labels[parent];
    labels[run] = isFirst ? count : known;
  }
  return count;
}

/** Writes up to the next whole vector, as long as that stays before `lineEnd`. */
HWY_INLINE void fill(int* begin, int* end, const int* lineEnd, int value) {
  const Labels d;
  const auto values = hn::Set(d, value);
  while (begin < end) {
    if (lineEnd - begin < static_cast<std::ptrdiff_t>(hn::Lanes(d))) {
      std::fill(begin, end, value);
      return;
    }
    hn::StoreU(values, d, begin);
    begin += hn::Lanes(d);
  }
}

void paintRow(const ComponentRuns::Row& runs, int* line, int width) {
  int* const lineEnd = line + width;
  int* at = line;
  for (std::size_t i = 0; i < runs.count; ++i) {
    fill(at, line + runs.begins[i], lineEnd, 0);
    at = line + runs.ends[i];
    fill(line + runs.begins[i], at, lineEnd, runs.labels[i]);
  }
  fill(at, lineEnd, lineEnd, 0);
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace QV::detail
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace QV::detail {

using vision::ComponentRuns;

namespace {

HWY_EXPORT(findRowRuns);
HWY_EXPORT(numberComponents);
HWY_EXPORT(paintRow);

using HWY_NAMESPACE::kMargin;
using HWY_NAMESPACE::kSlack;
using HWY_NAMESPACE::kWordBits;

void reset(RowBits& row, std::size_t words) {
  row.pixels.assign(kMargin + words * kWordBits, 0);
  row.valid.assign(words, 0);
  row.starts.assign(words, 0);
  row.ends.assign(words, 0);
  row.links.assign(words, 0);
  row.firstRuns.assign(words, 0);
}

}  // namespace

int findRuns(const cv::Mat& image, std::uint16_t maxDifference, RowPair& rows,
             ComponentRuns& runs) {
  const auto width = static_cast<std::size_t>(image.cols);
  const std::size_t words = (width + kWordBits - 1) / kWordBits;
  reset(rows.row, words);
  reset(rows.above, words);
  runs.clear();
  for (int y = 0; y < image.rows; ++y) {
    std::swap(rows.row, rows.above);
    std::copy_n(image.ptr<std::uint16_t>(y), width, rows.row.pixels.data() + kMargin);
    runs.beginRow(width + kSlack);
    HWY_DYNAMIC_DISPATCH(findRowRuns)(rows.row, rows.above, maxDifference, runs);
  }
  return HWY_DYNAMIC_DISPATCH(numberComponents)(runs);
}

void paintRuns(const ComponentRuns& runs, cv::Mat_<int>& labels) {
  for (int y = 0; y < labels.rows; ++y) {
    HWY_DYNAMIC_DISPATCH(paintRow)(runs.getRow(y), labels[y], labels.cols);
  }
}

}  // namespace QV::detail
#endif
