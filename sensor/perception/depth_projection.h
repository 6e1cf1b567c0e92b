#pragma once

#include <cstdint>
#include <vector>

#include <opencv2/core.hpp>

#include "platform/math/position.h"

namespace QV::sensor {

/**
 * Turns pixels of a depth image in millimetres into points in the camera's frame, in metres: x
 * along the optical axis, y to the left, z up; column width / 2 has y 0, row height / 2 has z 0.
 * Depth 0 and what is beyond kMaxDepth gives no point.
 */
class DepthProjection {
 public:
  /** Millimetres. */
  static constexpr std::uint16_t kMaxDepth = 15000;

  /** What the image covers sideways and upwards per unit of depth. */
  struct Extents {
    float xToZ = 0.0f;
    float yToZ = 0.0f;
  };

  /** For images of one size from now on. */
  void reset(cv::Size size, const Extents& extents);

  /** How many of these pixels give a point. */
  static int countInRange(const std::uint16_t* pixel, const std::uint16_t* end);

  /**
   * Writes the points of columns `begin` to before `end` of a row, whose pixels start at `pixels`;
   * returns where the next point goes.
   */
  Math::Position3D* project(const std::uint16_t* pixels, int row, int begin, int end,
                            Math::Position3D* out) const;

 private:
  Math::Position3D* xProjectEach(const std::uint16_t* pixels, int begin, int end, float up,
                                 Math::Position3D* out) const;
  void xProjectEight(const std::uint16_t* pixels, int begin, float up, Math::Position3D* out) const;

  Extents extents;
  float height = 0.0f;
  // How far right of the axis each column is, in widths of the image.
  std::vector<float> columns;
};

}  // namespace QV::sensor
