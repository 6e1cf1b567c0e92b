#include "sensor/perception/internal/depth_projection.h"

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

using Line = DepthProjection::Line;

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

HWY_INLINE Math::Position3D* projectRun(const Line& line, int begin, int end,
                                        Math::Position3D* out) {
  const int lanes = static_cast<int>(hn::Lanes(Floats()));
  Math::Position3D* const outEnd = out + (end - begin);
  if (end - begin < lanes) {
    while (begin < end) *out++ = projectOne(line, begin++);
    return outEnd;
  }
  for (; begin < end - lanes; begin += lanes, out += lanes) projectSome(line, begin, out);
  // The last ones once more, perhaps.
  projectSome(line, end - lanes, outEnd - lanes);
  return outEnd;
}

HWY_INLINE Math::Position3D* projectWithin(const Line& line, int begin, int end,
                                           Math::Position3D* out) {
  for (; begin < end; ++begin) {
    if (line.pixels[begin] <= DepthProjection::kMaxDepth) *out++ = projectOne(line, begin);
  }
  return out;
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

HWY_INLINE int countWithin(const std::uint16_t* pixels, int count) {
  const hn::CappedTag<std::uint16_t, 16> d;
  const int lanes = static_cast<int>(hn::Lanes(d));
  const auto limit = hn::Set(d, DepthProjection::kMaxDepth);
  int within = 0;
  int i = 0;
  for (; i + lanes <= count; i += lanes) {
    const auto over = hn::SaturatedSub(hn::LoadU(d, pixels + i), limit);
    within += static_cast<int>(hn::CountTrue(d, hn::Eq(over, hn::Zero(d))));
  }
  for (; i < count; ++i) within += pixels[i] <= DepthProjection::kMaxDepth ? 1 : 0;
  return within;
}

void countRow(const std::uint16_t* pixels, int width, const vision::ComponentRuns::Row& runs,
              int* counts) {
  const bool allWithin = !reachesBeyond(pixels, width);
  for (std::size_t i = 0; i < runs.count; ++i) {
    const int count = runs.ends[i] - runs.begins[i];
    counts[i] = allWithin ? count : countWithin(pixels + runs.begins[i], count);
  }
}

void projectRow(const Line& line, const vision::ComponentRuns::Row& runs, Math::Position3D** next) {
  const bool allWithin = !reachesBeyond(line.pixels, line.width);
  for (std::size_t i = 0; i < runs.count; ++i) {
    Math::Position3D*& out = next[runs.labels[i]];
    if (out == nullptr) continue;
    const int begin = runs.begins[i];
    const int end = runs.ends[i];
    const bool isWithin = allWithin || countWithin(line.pixels + begin, end - begin) == end - begin;
    out = isWithin ? projectRun(line, begin, end, out) : projectWithin(line, begin, end, out);
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
}

void DepthProjection::countPoints(const std::uint16_t* pixels, int width,
                                  const vision::ComponentRuns::Row& runs, int* counts) {
  HWY_DYNAMIC_DISPATCH(countRow)(pixels, width, runs, counts);
}

void DepthProjection::project(const std::uint16_t* pixels, int row,
                              const vision::ComponentRuns::Row& runs,
                              Math::Position3D** next) const {
  const float up = 0.5f - static_cast<float>(row) / height;
  const Line line{pixels, columns.data(), static_cast<int>(columns.size()), up, extents};
  HWY_DYNAMIC_DISPATCH(projectRow)(line, runs, next);
}

}  // namespace QV::sensor
#endif
