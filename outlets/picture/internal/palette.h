#pragma once

#include <string>

#include <opencv2/core.hpp>

namespace QV::outlets {

/** Blue, green, red. Colours that people with any kind of colour vision tell apart. */
cv::Scalar colourOfFamily(const std::string& family);

const cv::Scalar kInk(60, 50, 45);
const cv::Scalar kPaper(255, 255, 255);
const cv::Scalar kUnknown(226, 222, 218);
const cv::Scalar kPath(150, 120, 100);

}  // namespace QV::outlets
