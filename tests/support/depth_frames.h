#pragma once

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>

#include "tests/support/real_data.h"

namespace QV::test {

/** A recorded depth image, in the recording's own unit. */
struct DepthFrame {
  std::string name;
  cv::Mat_<std::uint16_t> depth;
};

/** The recorded frames in the order of their names; none where QV_DATA does not name the data. */
inline std::vector<DepthFrame> loadDepthFrames() {
  std::vector<DepthFrame> frames;
  const auto folder = findRealData("depth");
  if (!folder) return frames;
  for (const auto& entry : std::filesystem::directory_iterator(*folder)) {
    if (entry.path().extension() != ".png") continue;
    const cv::Mat image = cv::imread(entry.path().string(), cv::IMREAD_UNCHANGED);
    if (image.type() != CV_16UC1)
      throw std::runtime_error("no depth image: " + entry.path().string());
    frames.push_back({entry.path().stem().string(), image});
  }
  std::sort(frames.begin(), frames.end(),
            [](const auto& a, const auto& b) { return a.name < b.name; });
  return frames;
}

}  // namespace QV::test
