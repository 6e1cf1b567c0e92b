#pragma once

#include <opencv2/core.hpp>

#include "platform/api.h"

namespace QV::vision {

/**
 * Labels the components of a 16-bit depth image: pixels that hang together by neighbours (left,
 * right, above, below) whose depths differ by at most `maxDifference`, in the image's unit. Depth 0
 * is invalid and labelled 0; labels count from 1 in the row-major order of each component's first
 * pixel. `labels` gets the image's size. The last two numbers are reserved and must be 0. An image
 * of another type, a negative difference or a reserved number that is not 0 throws
 * std::invalid_argument.
 */
QV_API void connectedComponentLabeling(const cv::Mat& image, cv::Mat_<int>& labels,
                                       int maxDifference, int reserved1, int reserved2);

}  // namespace QV::vision
