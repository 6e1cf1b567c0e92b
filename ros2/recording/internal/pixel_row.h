#pragma once

#include <cstdint>

#include "platform/math/position.h"

namespace QV::ros2 {

/** The pixels of a row of a depth image, with the data that turns them into points. */
struct PixelRow {
  const std::uint16_t* pixels;
  /** The distances right of the image's middle, in widths of the image. */
  const float* columns;
  /** The distance of all above it, in heights. */
  float up;
  float width_by_depth;
  float height_by_depth;

  /** Returns the point as qv_msgs::ImagePoints defines it. Recordings depend on the result: never
   * change it. */
  Math::Position3D at(int column) const {
    constexpr float kMetres = 0.001f;
    const auto depth = static_cast<float>(pixels[column]);
    return {depth * kMetres, columns[column] * depth * width_by_depth * -kMetres,
            up * depth * height_by_depth * kMetres};
  }

  /** Counts how many of `count` points from the first on are those of the pixels, bit for bit. */
  int match(const Math::Position3D* points, int count) const;
};

}  // namespace QV::ros2
