#include "ros2/recording/internal/camera_points.h"

#include <algorithm>
#include <cmath>
#include <exception>

#include "platform/middleware/qv_video_device_proxy.h"
#include "ros2/recording/internal/conversions.h"
#include "ros2/recording/internal/sensor_sorts.h"
#include "ros2/recording/internal/topic_names.h"

namespace QV::ros2 {
namespace {

// Others may have taken one since.
constexpr std::size_t kPictures = 2;
// The numbers of columns and rows that viewers are shown.
constexpr int kColumnsShown = 80;

/** Returns the extents that the library's sensors use; none for a camera that fails to give them.
 */
ImageExtents extentsOf(const session::Session& session, int camera) {
  try {
    const QVVideoDeviceProxy cameras(session.getBroker());
    return {2.0f * std::tan(cameras.getHorizontalFOV(camera) * 0.5f),
            2.0f * std::tan(cameras.getVerticalFOV(camera) * 0.5f)};
  } catch (const std::exception&) {
    return {};
  }
}

// Nobody changes the pixels; OpenCV has no header over such.
cv::Mat_<std::uint16_t> depthOf(const QVImage& image) {
  return {image.getHeight(), image.getWidth(),
          reinterpret_cast<std::uint16_t*>(const_cast<std::uint8_t*>(image.getPixels()))};
}

}  // namespace

CameraPoints::CameraPoints(MessageSink& sink, const session::Session& session) : sink(sink) {
  const auto* robot = session.getDescription();
  if (!robot || !session.getBroker()) return;
  int index = kDepthCamera;
  for (const Model::SensorConfig* config : camerasOf(*robot)) {
    const auto topic = sink.add<qv_msgs::ImagePoints>(imagePointsTopicOf(config->name));
    cameras.push_back({config->name, topic, extentsOf(session, index++), {}});
  }
}

void CameraPoints::note(int camera, const QVValue& value, ko::Clock::time_point time) {
  const auto index = static_cast<std::size_t>(camera - kDepthCamera);
  const auto image = QVImage::fromQVValue(value);
  if (index >= cameras.size() || !image || image->getColorSpace() != kDepthColorSpace) return;
  auto& pictures = cameras[index].pictures;
  // A topic has one image per time; a second one replaces the first.
  if (!pictures.empty() && pictures.front().time == time) pictures.pop_front();
  pictures.push_front({*image, time});
  if (pictures.size() > kPictures) pictures.pop_back();
}

bool CameraPoints::write(const session::SensorState& sensor, ko::Clock::time_point time) {
  const auto camera = std::ranges::find(cameras, sensor.name, &Camera::name);
  if (camera == cameras.end()) return false;
  for (const Picture& picture : camera->pictures) {
    const auto depth = depthOf(picture.image);
    auto points = encodePoints(sensor.records, depth, camera->extents);
    if (!points) continue;
    points->image = imageTopicOf(camera->name);
    points->image_time = static_cast<std::int64_t>(logTimeOf(picture.time));
    sink.write(camera->topic, logTimeOf(time), *points);
    thinned = thinPoints(*points, depth, (depth.cols + kColumnsShown - 1) / kColumnsShown);
    return true;
  }
  return false;
}

}  // namespace QV::ros2
