#include "robot/services/depth_recording.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <stdexcept>

#include <opencv2/core.hpp>

#include "platform/vision/internal/png_image.h"
#include "robot/internal/file_bytes.h"

namespace QV::robot {
namespace {

// Slower is nobody's recording, and more would not fit a duration.
constexpr double kMinRate = 1e-6;
constexpr std::size_t kMostPngBytes = 256 << 20;

void checkNumber(const char* what, double value, double atLeast) {
  if (std::isfinite(value) && value >= atLeast && value > 0.0) return;
  throw std::invalid_argument(std::string("DepthRecording: ") + what + " above 0 expected, " +
                              std::to_string(value) + " given");
}

std::vector<std::string> pngsOf(const std::string& folder) {
  std::vector<std::string> files;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (entry.path().extension() == ".png") files.push_back(entry.path().string());
  }
  if (files.empty()) throw std::runtime_error("DepthRecording: no PNG in " + folder);
  std::sort(files.begin(), files.end());
  return files;
}

cv::Mat readImage(const std::string& file) {
  try {
    return QV::detail::decodePng(readFile(file, kMostPngBytes));
  } catch (const std::exception&) {
    throw std::runtime_error(file + ": not a readable PNG");
  }
}

}  // namespace

DepthRecording::DepthRecording(const std::string& folder, double metresPerUnit,
                               double framesPerSecond)
    : files(pngsOf(folder)), millimetresPerUnit(metresPerUnit * 1000.0) {
  checkNumber("metres per unit", metresPerUnit, 0.0);
  checkNumber("frames per second", framesPerSecond, kMinRate);
  interval = ko::Duration(std::max(std::llround(1e9 / framesPerSecond), 1LL));
}

void DepthRecording::operator()(cv::Mat_<std::uint16_t>& depth, ko::Clock::time_point time) {
  if (!start || time < *start) start = time;
  const auto played = static_cast<std::size_t>((time - *start) / interval);
  xLoad(played % files.size());
  depth = frame;
}

void DepthRecording::xLoad(std::size_t index) {
  if (loaded == index) return;
  const cv::Mat image = readImage(files[index]);
  if (image.type() != CV_16UC1) {
    throw std::runtime_error(files[index] + ": 16-bit grey expected, " +
                             cv::typeToString(image.type()) + " given");
  }
  // Rounds, and saturates beyond 65535.
  image.convertTo(frame, CV_16U, millimetresPerUnit);
  loaded = index;
}

}  // namespace QV::robot
