#include <cmath>
#include <cstdint>
#include <utility>

#include "platform/ko/log.h"
#include "platform/middleware/contracts/motion_contract.h"
#include "platform/middleware/qv_error.h"
#include "platform/vision/qv_image.h"
#include "sensor/perception/internal/depth_filter.h"
#include "sensor/perception/sensor_3d.h"

// The part of Sensor3D that turns an image into records.
namespace QV::sensor {
namespace {

constexpr char kScanCategory[] = "Navigation.Sensor3D";
// An image is older than its stamp.
constexpr ko::Duration kStampDelay(20'000'000);

ko::Clock::time_point acquisitionTime(const QVImage& image) {
  return ko::Clock::time_point(ko::Duration(image.getTimestamp() * 1000) - kStampDelay);
}

// The angles are requested once per process; after a failure the camera is asked again.
const DepthFilter::Extents& extentsOf(const QVVideoDeviceProxy& camera) {
  static const DepthFilter::Extents extents{
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

}  // namespace

void Sensor3D::xUpdateScan() {
  const auto failed = [this](const char* what, const char* text) {
    xLogError("xUpdateScan", what, text);
  };
  std::unique_ptr<QVImage> image;
  try {
    image = QVImage::fromQVValue(videoDeviceProxy.getImageRemote(cameraHandle));
  } catch (const std::exception& exception) {
    return failed("Error while getting new 3D image: ", exception.what());
  }
  if (!image) return failed("Error while getting new 3D image (null pointer)", "");
  const ko::Clock::time_point timestamp = acquisitionTime(*image);
  Math::Transform sensorTransform;
  try {
    sensorTransform = xGetTransformAtTime(timestamp);
  } catch (const std::exception& exception) {
    return failed("Error while getting tf: ", exception.what());
  }
  scans.clear();
  const bool ok = xFilterScan(*image, scans);
  xTryReleaseImage();
  // The image is garbage: neighbouring pixels differ, with depths that no camera measures.
  if (ok && scans.empty() && depthFilter->getPixelBeyond()) xNoteGarbage();
  if (ok) xPublish(scans, sensorTransform, timestamp);
}

Math::Transform Sensor3D::xGetTransformAtTime(ko::Clock::time_point time) const {
  return Math::Transform(motionProxy.getGenericProxy().call<std::vector<float>>(
      MotionContract::kGetSensorTransformAtTime, name, time));
}

bool Sensor3D::xFilterScan(QVImage& image, std::vector<Points>& scans) {
  try {
    const cv::Mat depth = qVImageToCvMat(image);
    depthFilter->filter(depth, extentsOf(videoDeviceProxy), filteringBlobSize, scans);
    xKeepPixelBeyond();
    return true;
  } catch (const std::exception&) {
    xKeepCaught(ko::log::Level::error, kScanCategory, "xFilterScan");
    return false;
  }
}

void Sensor3D::xComputeXYZCoordinates(const cv::Mat& depth, const cv::Mat_<int>& labels,
                                      std::vector<Points>& scans) {
  depthFilter->project(depth, labels, extentsOf(videoDeviceProxy), filteringBlobSize, scans);
  xKeepPixelBeyond();
}

// The filter has written a line for each such pixel.
void Sensor3D::xKeepPixelBeyond() const {
  const auto pixel = depthFilter->getPixelBeyond();
  if (!pixel) return;
  keepTrouble(ko::log::Level::error, kScanCategory, "xComputeXYZCoordinates",
              "Sensor3D filtering value x : " + std::to_string(*pixel));
}

void Sensor3D::xTryReleaseImage() {
  try {
    videoDeviceProxy.releaseImage(cameraHandle);
  } catch (const std::exception& exception) {
    xLogError("xTryReleaseImage", "Error while releasing 3D image: ", exception.what());
  }
}

void Sensor3D::xPublish(std::vector<Points>& scans, const Math::Transform& sensorTransform,
                        ko::Clock::time_point timestamp) {
  std::vector<Math::MetricalData>& records = replaced;
  records.resize(scans.size());
  for (std::size_t i = 0; i < scans.size(); ++i) {
    records[i] = {name, familyName, fieldOfView, sensorTransform, std::move(scans[i]), timestamp};
  }
  {
    std::lock_guard<std::mutex> lock(dataMutex);
    data.swap(records);
    if (data.empty()) emptyAt = ko::Clock::now();
  }
  for (Math::MetricalData& record : replaced) depthFilter->give(std::move(record.points));
}

}  // namespace QV::sensor
