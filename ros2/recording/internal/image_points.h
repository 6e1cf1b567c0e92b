#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include <opencv2/core.hpp>

#include "platform/api.h"
#include "platform/math/metrical_data.h"
#include "ros2/messages/report_msgs.h"

namespace QV::ros2 {

/** The extents of a depth image sideways and upwards, divided by the depth. */
struct ImageExtents {
  float width = 0.0f;
  float height = 0.0f;
};

/**
 * Returns the runs of pixels that give all points of these records, one record after the other, bit
 * for bit; std::nullopt if a point belongs to no pixel.
 */
QV_API std::optional<qv_msgs::ImagePoints> encodePoints(
    const std::vector<Math::MetricalData>& records, const cv::Mat_<std::uint16_t>& depth,
    const ImageExtents& extents);

/** Returns the points again. Throws std::runtime_error for runs outside the image. */
QV_API std::vector<Math::Position3D> decodePoints(const qv_msgs::ImagePoints& points,
                                                  const cv::Mat_<std::uint16_t>& depth);

/** Returns those of them in every nth row and column. */
QV_API std::vector<Math::Position3D> thinPoints(const qv_msgs::ImagePoints& points,
                                                const cv::Mat_<std::uint16_t>& depth, int n);

}  // namespace QV::ros2
