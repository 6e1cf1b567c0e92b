#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

#include "platform/ko/log.h"
#include "platform/middleware/qv_error.h"
#include "platform/vision/video_codes.h"
#include "sensor/perception/sensor_3d.h"

namespace QV::sensor {
namespace {

constexpr char kCategory[] = "Navigation.Sensor3D";
// Millimetres between neighbours of one component.
constexpr int kMaxDifference = 100;

// Once in the life of the process; a camera that fails to tell is asked again.
const DepthProjection::Extents& extentsOf(const QVVideoDeviceProxy& camera) {
  static const DepthProjection::Extents extents{
      2.0f * std::tan(camera.getHorizontalFOV(kDepthCamera) * 0.5f),
      2.0f * std::tan(camera.getVerticalFOV(kDepthCamera) * 0.5f)};
  return extents;
}

cv::Mat qVImageToCvMat(QVImage& image) {
  const int colorSpace = image.getColorSpace();
  const auto refuse = [](const char* what, int value) {
    throw QVError("QVVision", "qVImageToCvMat",
                  std::string(what) + " \"" + std::to_string(value) + "\" not supported");
  };
  const int layers = getNumLayersInColorSpace(colorSpace);
  const int channels = getNumChannelsInColorSpace(colorSpace);
  if (layers < 0 || channels < 0) refuse("Color space", colorSpace);
  const int bytes = layers / channels;
  if (bytes != 1 && bytes != 2 && bytes != 4) refuse("Depth", bytes);
  const int depth = bytes == 1 ? CV_8U : bytes == 2 ? CV_16U : CV_32F;
  // OpenCV has no header over pixels that must not change; nobody changes them here.
  return cv::Mat(image.getHeight(), image.getWidth(), CV_MAKETYPE(depth, channels),
                 const_cast<std::uint8_t*>(image.getPixels()));
}

/** Calls `visit(label, row, begin, end)` for each stretch of one label other than 0. */
template <typename Visit>
void forEachStretch(const cv::Mat_<int>& labels, const Visit& visit) {
  for (int row = 0; row < labels.rows; ++row) {
    const int* const line = labels[row];
    const int* const lineEnd = line + labels.cols;
    for (const int* begin = line; begin != lineEnd;) {
      const int label = *begin;
      const int* end = begin;
      while (end != lineEnd && *end == label) ++end;
      if (label != 0) {
        visit(label, row, static_cast<int>(begin - line), static_cast<int>(end - line));
      }
      begin = end;
    }
  }
}

void logTooFar(const std::uint16_t* depth, const std::uint16_t* end) {
  for (; depth != end; ++depth) {
    if (*depth <= DepthProjection::kMaxDepth) continue;
    ko::log::error(kCategory, "xComputeXYZCoordinates")
        << "Sensor3D filtering value x : " << *depth;
  }
}

}  // namespace

bool Sensor3D::xFilterScan(QVImage& image, std::vector<Points>& scans) {
  try {
    const cv::Mat depth = qVImageToCvMat(image);
    labeler.label(depth, labels, kMaxDifference);
    xComputeXYZCoordinates(depth, labels, scans);
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

void Sensor3D::xComputeXYZCoordinates(const cv::Mat& depth, const cv::Mat_<int>& labels,
                                      std::vector<Points>& scans) {
  projection.reset(depth.size(), extentsOf(videoDeviceProxy));
  xCountPoints(depth, labels);
  std::erase_if(scans, [this](const Points& points) {
    return static_cast<int>(points.size()) < filteringBlobSize;
  });
  xMakeRoom(scans);
  forEachStretch(labels, [&](int label, int row, int begin, int end) {
    Math::Position3D*& next = components[static_cast<std::size_t>(label)].next;
    if (next != nullptr) {
      next = projection.project(depth.ptr<std::uint16_t>(row), row, begin, end, next);
    }
  });
}

void Sensor3D::xCountPoints(const cv::Mat& depth, const cv::Mat_<int>& labels) {
  components.clear();
  labelOrder.clear();
  const bool logs = ko::log::isEnabled(ko::log::Level::error, kCategory);
  forEachStretch(labels, [&](int label, int row, int begin, int end) {
    const std::uint16_t* pixels = depth.ptr<std::uint16_t>(row);
    const auto count = DepthProjection::countInRange(pixels + begin, pixels + end);
    if (logs && count < end - begin) logTooFar(pixels + begin, pixels + end);
    const auto index = static_cast<std::size_t>(label);
    if (index >= components.size()) components.resize(index + 1);
    if (count > 0 && components[index].pointCount == 0) labelOrder.push_back(label);
    components[index].pointCount += count;
  });
}

void Sensor3D::xMakeRoom(std::vector<Points>& scans) {
  for (const int label : labelOrder) {
    Component& component = components[static_cast<std::size_t>(label)];
    if (component.pointCount < filteringBlobSize) continue;
    scans.push_back(xTakePoints(static_cast<std::size_t>(component.pointCount)));
    component.next = scans.back().data();
  }
}

// The smallest spare that is large enough, or memory of its own.
Sensor3D::Points Sensor3D::xTakePoints(std::size_t count) {
  Points* best = nullptr;
  for (Points& spare : spares) {
    if (spare.capacity() < count) continue;
    if (best == nullptr || spare.capacity() < best->capacity()) best = &spare;
  }
  Points points = best == nullptr ? Points() : std::exchange(*best, {});
  points.resize(count);
  return points;
}

}  // namespace QV::sensor
