#include "sensor/perception/internal/depth_projection.h"

#include <algorithm>
#include <bit>
#include <cstddef>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "sensor/perception/internal/depth_projection.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace QV::sensor {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using Floats = hn::CappedTag<float, 8>;
using Pixels = hn::ScalableTag<std::uint16_t>;

constexpr float kMetres = 0.001f;

constexpr int kWordBits = 64;

using Line = DepthProjection::Line;
using Room = DepthProjection::Room;
using Within = DepthProjection::Within;

HWY_INLINE Math::Position3D projectOne(const Line& line, int column) {
  const auto d = static_cast<float>(line.pixels[column]);
  return {d * kMetres, line.columns[column] * d * line.extents.xToZ * -kMetres,
          line.up * d * line.extents.yToZ * kMetres};
}

// The same products in the same order as above: the same bits.
HWY_INLINE void projectSome(const Line& line, int column, Math::Position3D* out) {
  static_assert(sizeof(Math::Position3D) == 3 * sizeof(float));
  const Floats f;
  const hn::RebindToSigned<Floats> i;
  const auto pixels = hn::LoadU(hn::Rebind<std::uint16_t, Floats>(), line.pixels + column);
  const auto d = hn::ConvertTo(f, hn::PromoteTo(i, pixels));
  const auto metres = hn::Set(f, kMetres);
  const auto sideways =
      hn::Mul(hn::Mul(hn::LoadU(f, line.columns + column), d), hn::Set(f, line.extents.xToZ));
  const auto upwards = hn::Mul(hn::Mul(hn::Set(f, line.up), d), hn::Set(f, line.extents.yToZ));
  hn::StoreInterleaved3(hn::Mul(d, metres), hn::Mul(sideways, hn::Set(f, -kMetres)),
                        hn::Mul(upwards, metres), f, &out->x);
}

/** Projects pixels that are all within. */
HWY_INLINE void projectRun(const Line& line, int begin, int end, Room& room) {
  const int lanes = static_cast<int>(hn::Lanes(Floats()));
  Math::Position3D* out = room.next;
  room.next += end - begin;
  if (end - begin < lanes) {
    // A few points more than there are cost less than to count them; the next ones replace them.
    if (begin + lanes <= line.width && room.end - out >= lanes) {
      return projectSome(line, begin, out);
    }
    while (begin < end) *out++ = projectOne(line, begin++);
    return;
  }
  for (; begin < end - lanes; begin += lanes, out += lanes) projectSome(line, begin, out);
  // The last ones once more, perhaps.
  projectSome(line, end - lanes, room.next - lanes);
}

/** Projects what is within. */
HWY_INLINE void projectPieces(const Line& line, int begin, int end, Room& room) {
  for (; begin < end; ++begin) {
    const int first = begin;
    while (begin < end && line.pixels[begin] <= DepthProjection::kMaxDepth) ++begin;
    projectRun(line, first, begin, room);
  }
}

bool reachesBeyond(const std::uint16_t* pixels, int count) {
  const Pixels d;
  const int lanes = static_cast<int>(hn::Lanes(d));
  auto most = hn::Zero(d);
  int i = 0;
  for (; i + lanes <= count; i += lanes) most = hn::Max(most, hn::LoadU(d, pixels + i));
  const auto limit = hn::Set(d, DepthProjection::kMaxDepth);
  bool beyond = !hn::AllTrue(d, hn::Eq(hn::SaturatedSub(most, limit), hn::Zero(d)));
  for (; i < count; ++i) beyond |= pixels[i] > DepthProjection::kMaxDepth;
  return beyond;
}

void findWithin(const std::uint16_t* pixels, int width, Within& within) {
  const Pixels d;
  const int lanes = static_cast<int>(hn::Lanes(d));
  const auto limit = hn::Set(d, DepthProjection::kMaxDepth);
  int before = 0;
  for (int word = 0, i = 0; word <= width / kWordBits; ++word) {
    const int end = std::min(width, i + kWordBits);
    std::uint64_t bits = 0;
    for (int shift = 0; i + lanes <= end; i += lanes, shift += lanes) {
      const auto over = hn::SaturatedSub(hn::LoadU(d, pixels + i), limit);
      std::uint64_t some = 0;
      hn::StoreMaskBits(d, hn::Eq(over, hn::Zero(d)), reinterpret_cast<std::uint8_t*>(&some));
      bits |= some << shift;
    }
    for (; i < end; ++i) {
      const bool isWithin = pixels[i] <= DepthProjection::kMaxDepth;
      bits |= std::uint64_t{isWithin} << (i % kWordBits);
    }
    within.bits[static_cast<std::size_t>(word)] = bits;
    within.before[static_cast<std::size_t>(word)] = before;
    before += std::popcount(bits);
  }
}

/** Counts the pixels within that lie before a column. */
HWY_INLINE int countBefore(const Within& within, int column) {
  const auto word = static_cast<std::size_t>(column / kWordBits);
  const std::uint64_t mask = (std::uint64_t{1} << (column % kWordBits)) - 1;
  return within.before[word] + std::popcount(within.bits[word] & mask);
}

void countRow(const std::uint16_t* pixels, int width, const vision::ComponentRuns::Row& runs,
              Within& within, int* counts) {
  const bool allWithin = !reachesBeyond(pixels, width);
  if (!allWithin) findWithin(pixels, width, within);
  for (std::size_t i = 0; i < runs.count; ++i) {
    const int begin = runs.begins[i];
    const int end = runs.ends[i];
    counts[i] = allWithin ? end - begin : countBefore(within, end) - countBefore(within, begin);
  }
}

void projectRow(const Line& line, const vision::ComponentRuns::Row& runs, Within& within,
                Room* rooms) {
  const bool allWithin = !reachesBeyond(line.pixels, line.width);
  if (!allWithin) findWithin(line.pixels, line.width, within);
  for (std::size_t i = 0; i < runs.count; ++i) {
    Room& room = rooms[runs.labels[i]];
    if (room.next == nullptr) continue;
    const int begin = runs.begins[i];
    const int end = runs.ends[i];
    if (allWithin || countBefore(within, end) - countBefore(within, begin) == end - begin) {
      projectRun(line, begin, end, room);
    } else {
      projectPieces(line, begin, end, room);
    }
  }
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace QV::sensor
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace QV::sensor {
namespace {

HWY_EXPORT(projectRow);
HWY_EXPORT(countRow);

}  // namespace

void DepthProjection::reset(cv::Size size, const Extents& extents) {
  this->extents = extents;
  height = static_cast<float>(size.height);
  columns.clear();
  const auto width = static_cast<float>(size.width);
  for (int u = 0; u < size.width; ++u) columns.push_back(static_cast<float>(u) / width - 0.5f);
  const std::size_t words = columns.size() / HWY_NAMESPACE::kWordBits + 1;
  within.bits.resize(words);
  within.before.resize(words);
}

void DepthProjection::countPoints(const std::uint16_t* pixels,
                                  const vision::ComponentRuns::Row& runs, int* counts) {
  const int width = static_cast<int>(columns.size());
  HWY_DYNAMIC_DISPATCH(countRow)(pixels, width, runs, within, counts);
}

void DepthProjection::project(const std::uint16_t* pixels, int row,
                              const vision::ComponentRuns::Row& runs, Room* rooms) {
  const float up = 0.5f - static_cast<float>(row) / height;
  const Line line{pixels, columns.data(), static_cast<int>(columns.size()), up, extents};
  HWY_DYNAMIC_DISPATCH(projectRow)(line, runs, within, rooms);
}

}  // namespace QV::sensor
#endif
