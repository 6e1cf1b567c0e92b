#pragma once

#include <string>

#include <opencv2/core.hpp>

#include "platform/api.h"

namespace QV::outlets {

/** A family's colour as OpenCV has it: blue, green, red. So are the others. */
QV_API cv::Scalar paintOf(const std::string& family);

const cv::Scalar kInk(60, 50, 45);
const cv::Scalar kPaper(255, 255, 255);
const cv::Scalar kUnknown(226, 222, 218);
const cv::Scalar kPath(150, 120, 100);

}  // namespace QV::outlets
