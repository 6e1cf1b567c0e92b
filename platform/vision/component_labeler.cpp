#include "platform/vision/component_labeler.h"

#include <algorithm>
#include <bit>
#include <stdexcept>
#include <string>
#include <utility>

#include <opencv2/core/hal/intrin.hpp>

namespace QV::vision {
namespace {

using cv::v_uint16x8;

constexpr std::size_t kWordBits = 64;
// Zeros before a row, so that its first pixel has an invalid neighbour on the left.
constexpr std::size_t kMargin = 8;

// Bit i of the result is what `test` says of pixel i of 64; it is asked for eight at a time.
template <typename Test>
std::uint64_t gatherBits(const Test& test) {
  std::uint64_t bits = 0;
  for (std::size_t i = 0; i < kWordBits; i += 16) {
    const auto low = cv::v_reinterpret_as_s16(test(i));
    const auto high = cv::v_reinterpret_as_s16(test(i + 8));
    const auto sixteen = static_cast<std::uint64_t>(cv::v_signmask(cv::v_pack(low, high)));
    bits |= sixteen << i;
  }
  return bits;
}

std::uint64_t validBits(const std::uint16_t* pixels) {
  const v_uint16x8 zero = cv::v_setzero_u16();
  return gatherBits([&](std::size_t i) { return cv::v_load(pixels + i) != zero; });
}

// Which pixels differ from their partners by at most `maxDifference`.
std::uint64_t nearBits(const std::uint16_t* pixels, const std::uint16_t* partners,
                       std::uint16_t maxDifference) {
  const v_uint16x8 limit = cv::v_setall_u16(maxDifference);
  const v_uint16x8 zero = cv::v_setzero_u16();
  return gatherBits([&](std::size_t i) {
    // Subtraction saturates at 0.
    return cv::v_absdiff(cv::v_load(pixels + i), cv::v_load(partners + i)) - limit == zero;
  });
}

// The bits one pixel further right; `carry` takes the last bit on to the next word.
std::uint64_t shiftRight(std::uint64_t bits, std::uint64_t& carry) {
  const std::uint64_t shifted = (bits << 1) | carry;
  carry = bits >> (kWordBits - 1);
  return shifted;
}

template <typename Visit>
void forEachBit(std::uint64_t bits, std::size_t word, const Visit& visit) {
  for (; bits != 0; bits &= bits - 1) {
    visit(static_cast<int>(word * kWordBits) + std::countr_zero(bits));
  }
}

}  // namespace

int ComponentLabeler::label(const cv::Mat& image, cv::Mat_<int>& labels, int maxDifference) {
  if (image.dims > 2 || image.type() != CV_16UC1) {
    throw std::invalid_argument("connectedComponentLabeling: an image of one 16-bit channel " +
                                ("expected, " + cv::typeToString(image.type())) + " given");
  }
  if (maxDifference < 0) {
    throw std::invalid_argument(
        "connectedComponentLabeling: a difference of at least 0 expected, " +
        std::to_string(maxDifference) + " given");
  }
  this->maxDifference = static_cast<std::uint16_t>(std::min(maxDifference, 0xffff));
  xReset(image.cols);
  for (int y = 0; y < image.rows; ++y) {
    std::swap(row, above);
    std::copy_n(image.ptr<std::uint16_t>(y), image.cols, row.pixels.data() + kMargin);
    xFindRuns();
    xJoinToRowAbove();
  }
  firstRuns.push_back(runs.size());
  const int count = xNumberComponents();
  labels.create(image.size());
  xPaint(labels);
  return count;
}

void ComponentLabeler::xReset(int width) {
  // At least one bit beyond the width, where a run that touches the right edge ends.
  const std::size_t words = static_cast<std::size_t>(width) / kWordBits + 1;
  for (Row* each : {&row, &above}) {
    each->pixels.assign(kMargin + words * kWordBits, 0);
    each->valid.assign(words, 0);
    each->starts.assign(words, 0);
    each->firstRun = 0;
  }
  runs.clear();
  firstRuns.clear();
}

void ComponentLabeler::xFindRuns() {
  row.firstRun = runs.size();
  firstRuns.push_back(row.firstRun);
  std::size_t ended = row.firstRun;
  std::uint64_t carry = 0;
  for (std::size_t word = 0; word < row.valid.size(); ++word) {
    const std::uint16_t* pixels = row.pixels.data() + kMargin + word * kWordBits;
    const std::uint64_t valid = validBits(pixels);
    const std::uint64_t afterValid = shiftRight(valid, carry);
    const std::uint64_t continued =
        valid & afterValid & nearBits(pixels, pixels - 1, maxDifference);
    row.valid[word] = valid;
    row.starts[word] = valid & ~continued;
    forEachBit(row.starts[word], word, [&](int x) {
      runs.push_back({x, 0, static_cast<int>(runs.size()), 0});
    });
    forEachBit(afterValid & ~continued, word, [&](int x) { runs[ended++].end = x; });
  }
}

void ComponentLabeler::xJoinToRowAbove() {
  std::size_t run = row.firstRun;
  std::size_t runAbove = above.firstRun;
  std::uint64_t carry = 0;
  for (std::size_t word = 0; word < row.valid.size(); ++word) {
    const std::size_t first = kMargin + word * kWordBits;
    const std::uint64_t linked =
        row.valid[word] & above.valid[word] &
        nearBits(row.pixels.data() + first, above.pixels.data() + first, maxDifference);
    // Where the pixel to the left links the same two runs there is nothing new.
    const std::uint64_t known = shiftRight(linked, carry) & ~row.starts[word] & ~above.starts[word];
    forEachBit(linked & ~known, word, [&](int x) {
      while (runs[run].end <= x) ++run;
      while (runs[runAbove].end <= x) ++runAbove;
      xJoin(run, runAbove);
    });
  }
}

void ComponentLabeler::xJoin(std::size_t run, std::size_t runAbove) {
  const int a = xRootOf(static_cast<int>(run));
  const int b = xRootOf(static_cast<int>(runAbove));
  runs[static_cast<std::size_t>(std::max(a, b))].parent = std::min(a, b);
}

int ComponentLabeler::xRootOf(int run) {
  const auto parentOf = [this](int i) -> int& { return runs[static_cast<std::size_t>(i)].parent; };
  while (parentOf(run) != run) run = parentOf(run) = parentOf(parentOf(run));
  return run;
}

int ComponentLabeler::xNumberComponents() {
  int count = 0;
  for (std::size_t i = 0; i < runs.size(); ++i) {
    // A parent comes before its children, the first run of a component before all others.
    const auto parent = static_cast<std::size_t>(runs[i].parent);
    runs[i].label = parent == i ? ++count : runs[parent].label;
  }
  return count;
}

void ComponentLabeler::xPaint(cv::Mat_<int>& labels) const {
  for (int y = 0; y < labels.rows; ++y) {
    int* out = labels[y];
    int x = 0;
    const auto index = static_cast<std::size_t>(y);
    for (std::size_t i = firstRuns[index]; i < firstRuns[index + 1]; ++i) {
      std::fill(out + x, out + runs[i].begin, 0);
      std::fill(out + runs[i].begin, out + runs[i].end, runs[i].label);
      x = runs[i].end;
    }
    std::fill(out + x, out + labels.cols, 0);
  }
}

}  // namespace QV::vision
