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

constexpr char kFilteringCategory[] = "Navigation.Sensor3D";
// Millimetres between neighbours of one component.
constexpr int kMaxDifference = 100;
// As many whole frames' points are kept: with fewer, frames that differ find no list long enough.
constexpr std::size_t kSpareFrames = 3;

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

/** The pixels that have both a label and a depth. */
void findRuns(const cv::Mat& depth, const cv::Mat_<int>& labels, vision::ComponentRuns& runs) {
  runs.clear();
  for (int y = 0; y < labels.rows; ++y) {
    runs.beginRow(static_cast<std::size_t>(labels.cols));
    const int* const label = labels[y];
    const std::uint16_t* const pixels = depth.ptr<std::uint16_t>(y);
    for (int x = 0; x < labels.cols;) {
      const int begin = x;
      while (x < labels.cols && label[x] == label[begin] && pixels[x] != 0) ++x;
      if (x == begin) {
        ++x;
      } else if (label[begin] != 0) {
        runs.append(begin, x, label[begin]);
      }
    }
  }
}

/** How many of these pixels give a point; a line for each that does not. */
int countWithin(const std::uint16_t* pixel, const std::uint16_t* end, bool logs) {
  int count = 0;
  for (; pixel != end; ++pixel) {
    if (*pixel <= DepthProjection::kMaxDepth) {
      ++count;
    } else if (logs) {
      ko::log::error(kFilteringCategory, "xComputeXYZCoordinates")
          << "Sensor3D filtering value x : " << *pixel;
    }
  }
  return count;
}

}  // namespace

bool Sensor3D::xFilterScan(QVImage& image, std::vector<Points>& scans) {
  try {
    const cv::Mat depth = qVImageToCvMat(image);
    xProjectRuns(depth, labeler.findRuns(depth, kMaxDifference), scans);
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

void Sensor3D::xComputeXYZCoordinates(const cv::Mat& depth, const cv::Mat_<int>& labels,
                                      std::vector<Points>& scans) {
  findRuns(depth, labels, labelRuns);
  xProjectRuns(depth, labelRuns, scans);
}

void Sensor3D::xProjectRuns(const cv::Mat& depth, const vision::ComponentRuns& runs,
                            std::vector<Points>& scans) {
  projection.reset(depth.size(), extentsOf(videoDeviceProxy));
  xCountPoints(depth, runs);
  std::erase_if(scans, [this](const Points& points) {
    return static_cast<int>(points.size()) < filteringBlobSize;
  });
  xMakeRoom(scans);
  spares.trim(kSpareFrames * depth.total());
  for (int y = 0; y < depth.rows; ++y) {
    projection.project(depth.ptr<std::uint16_t>(y), y, runs.getRow(y), nextPoints.data());
  }
}

void Sensor3D::xCountPoints(const cv::Mat& depth, const vision::ComponentRuns& runs) {
  pointCounts.clear();
  labelOrder.clear();
  const bool logs = ko::log::isEnabled(ko::log::Level::error, kFilteringCategory);
  for (int y = 0; y < depth.rows; ++y) {
    const std::uint16_t* const pixels = depth.ptr<std::uint16_t>(y);
    const bool beyond = DepthProjection::reachesBeyond(pixels, depth.cols);
    const vision::ComponentRuns::Row row = runs.getRow(y);
    for (std::size_t i = 0; i < row.count; ++i) {
      const int begin = row.begins[i];
      const int end = row.ends[i];
      const int count = beyond ? countWithin(pixels + begin, pixels + end, logs) : end - begin;
      const auto label = static_cast<std::size_t>(row.labels[i]);
      if (label >= pointCounts.size()) pointCounts.resize(label + 1);
      if (count > 0 && pointCounts[label] == 0) labelOrder.push_back(row.labels[i]);
      pointCounts[label] += count;
    }
  }
}

void Sensor3D::xMakeRoom(std::vector<Points>& scans) {
  nextPoints.assign(pointCounts.size(), nullptr);
  for (const int label : labelOrder) {
    const auto index = static_cast<std::size_t>(label);
    if (pointCounts[index] < filteringBlobSize) continue;
    scans.push_back(spares.take(static_cast<std::size_t>(pointCounts[index])));
    nextPoints[index] = scans.back().data();
  }
}

}  // namespace QV::sensor
