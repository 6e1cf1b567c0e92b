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
 * Plays a folder of 16-bit PNGs, in the order of their names and from the first again after the
 * last, at the rate it was recorded at; the first call starts it. A FrameSource.
 */
class QV_API DepthRecording {
 public:
  /**
   * `metresPerUnit` is what one unit of the PNGs stands for. A number that is not above 0:
   * std::invalid_argument; a folder without PNG: std::runtime_error.
   */
  DepthRecording(const std::string& folder, double metresPerUnit, double framesPerSecond);

  /**
   * `depth` becomes the frame of `time` in millimetres, at most 65535; it is good until the next
   * call. A file that is no 16-bit grey PNG: std::runtime_error.
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
