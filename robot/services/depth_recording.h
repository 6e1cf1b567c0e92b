#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <opencv2/core.hpp>

#include "platform/api.h"
#include "platform/ko/clock.h"

namespace QV::robot {

/**
 * A FrameSource that plays a folder of 16-bit PNGs, in the order of their names and in a loop, at
 * the recorded rate. The first call starts it.
 */
class QV_API DepthRecording {
 public:
  /**
   * `metresPerUnit` is the depth of one unit of the PNGs. Throws std::invalid_argument for a number
   * that is not above 0, std::runtime_error for a folder without a PNG.
   */
  DepthRecording(const std::string& folder, double metresPerUnit, double framesPerSecond);

  /**
   * Sets `depth` to the frame of `time`, in millimetres, at most 65535; it is valid until the next
   * call. Throws std::runtime_error for a file that is no 16-bit grey PNG.
   */
  void operator()(cv::Mat_<std::uint16_t>& depth, ko::Clock::time_point time);

  std::size_t getFrameCount() const { return files.size(); }

 private:
  void xLoad(std::size_t index);

  std::vector<std::string> files;
  double millimetresPerUnit;
  ko::Duration interval;
  std::optional<ko::Clock::time_point> start;
  std::optional<std::size_t> loaded;
  cv::Mat_<std::uint16_t> frame;
};

}  // namespace QV::robot
