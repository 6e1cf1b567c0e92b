#include "sensor/perception/depth_projection.h"

#include <opencv2/core/hal/intrin.hpp>

namespace QV::sensor {
namespace {

constexpr int kStep = 8;
constexpr float kMetres = 0.001f;

bool isInRange(std::uint16_t depth) {
  return depth != 0 && depth <= DepthProjection::kMaxDepth;
}

bool areEightInRange(const std::uint16_t* pixels) {
  // 0 wraps to the top of the range; the second subtraction saturates at 0.
  const auto fromOne = cv::v_sub_wrap(cv::v_load(pixels), cv::v_setall_u16(1));
  const auto beyond = fromOne - cv::v_setall_u16(DepthProjection::kMaxDepth - 1);
  return cv::v_check_all(beyond == cv::v_setzero_u16());
}

}  // namespace

void DepthProjection::reset(cv::Size size, const Extents& extents) {
  this->extents = extents;
  height = static_cast<float>(size.height);
  columns.clear();
  const auto width = static_cast<float>(size.width);
  for (int u = 0; u < size.width; ++u) columns.push_back(static_cast<float>(u) / width - 0.5f);
}

int DepthProjection::countInRange(const std::uint16_t* pixel, const std::uint16_t* end) {
  int count = 0;
  for (; pixel != end; ++pixel) count += isInRange(*pixel) ? 1 : 0;
  return count;
}

Math::Position3D* DepthProjection::project(const std::uint16_t* pixels, int row, int begin, int end,
                                           Math::Position3D* out) const {
  const float up = 0.5f - static_cast<float>(row) / height;
  for (; begin + kStep <= end; begin += kStep) {
    if (areEightInRange(pixels + begin)) {
      xProjectEight(pixels, begin, up, out);
      out += kStep;
    } else {
      out = xProjectEach(pixels, begin, begin + kStep, up, out);
    }
  }
  return xProjectEach(pixels, begin, end, up, out);
}

Math::Position3D* DepthProjection::xProjectEach(const std::uint16_t* pixels, int begin, int end,
                                                float up, Math::Position3D* out) const {
  for (; begin < end; ++begin) {
    if (!isInRange(pixels[begin])) continue;
    const auto d = static_cast<float>(pixels[begin]);
    const float across = columns[static_cast<std::size_t>(begin)];
    *out++ = {d * kMetres, across * d * extents.xToZ * -kMetres, up * d * extents.yToZ * kMetres};
  }
  return out;
}

// The same products in the same order as above: the same bits.
void DepthProjection::xProjectEight(const std::uint16_t* pixels, int begin, float up,
                                    Math::Position3D* out) const {
  static_assert(sizeof(Math::Position3D) == 3 * sizeof(float));
  const auto metres = cv::v_setall_f32(kMetres);
  const auto backwards = cv::v_setall_f32(-kMetres);
  cv::v_uint32x4 halves[2];
  cv::v_expand(cv::v_load(pixels + begin), halves[0], halves[1]);
  const float* across = columns.data() + begin;
  for (const cv::v_uint32x4& half : halves) {
    const auto d = cv::v_cvt_f32(cv::v_reinterpret_as_s32(half));
    const auto y = cv::v_load(across) * d * cv::v_setall_f32(extents.xToZ) * backwards;
    const auto z = cv::v_setall_f32(up) * d * cv::v_setall_f32(extents.yToZ) * metres;
    cv::v_store_interleave(&out->x, d * metres, y, z);
    out += 4;
    across += 4;
  }
}

}  // namespace QV::sensor
