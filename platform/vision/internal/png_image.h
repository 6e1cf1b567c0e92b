#pragma once

#include <string>
#include <string_view>

#include <opencv2/core.hpp>

#include "platform/api.h"

namespace QV::detail {

/**
 * A PNG's image as it is stored, of 8 or 16 bits a sample: one channel of grey, or three in the
 * order blue, green, red. Alpha is left out, a palette's colours take the place of its numbers.
 * Throws std::runtime_error for an incomplete or invalid PNG.
 */
QV_API cv::Mat decodePng(std::string_view bytes);

/** Encodes an image, fast rather than small; 8 bits a sample. */
QV_API std::string encodePng(const cv::Mat& image);

}  // namespace QV::detail
