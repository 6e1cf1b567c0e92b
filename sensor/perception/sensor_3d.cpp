#include "sensor/perception/sensor_3d.h"

#include <cstdint>
#include <utility>

#include "platform/ko/log.h"
#include "platform/vision/qv_image.h"
#include "sensor/core/internal/copy_records.h"
#include "sensor/perception/internal/depth_filter.h"

namespace QV::sensor {
namespace {

constexpr char kDepthCategory[] = "Navigation.Sensor3D";
constexpr char kClientName[] = "Sensor3D";
constexpr int kHighResolutionModel = 7;
// An image without anything in it is no reason for silence for longer.
constexpr ko::Duration kMostImageAge(400'000'000);

}  // namespace

Sensor3D::Sensor3D(const std::string& name, const std::string& familyName,
                   boost::shared_ptr<QVBroker> broker, const Math::SensorFieldOfView2D& fieldOfView)
    : Sensor(name, familyName, fieldOfView),
      videoDeviceProxy(broker),
      motionProxy(broker),
      resolution(xGetCameraResolution()),
      filteringBlobSize(xInitFilteringBlobSize()),
      depthFilter(std::make_unique<DepthFilter>()) {
  updateTask.setName(kClientName);
  updateTask.setCallback([this] { xUpdateScan(); });
  updateTask.setUsPeriod(std::int64_t{periodMs} * 1000);
  updateTask.compensateCallbackTime(true);
}

Sensor3D::~Sensor3D() {
  try {
    Sensor3D::xUnsubscribeFromHardware();
  } catch (...) {
    // An exception can't leave the destructor, and the members must be destroyed.
  }
}

int Sensor3D::xGetCameraResolution() {
  const bool high = videoDeviceProxy.getCameraModel(kDepthCamera) == kHighResolutionModel;
  return high ? k640x480Resolution : k320x240Resolution;
}

int Sensor3D::xInitFilteringBlobSize() {
  int height = 0;
  setSizeFromResolution(resolution, fieldOfView.rayCount, height);
  // 0.01 must be a double; as a float the product is too small.
  const auto hundredth = static_cast<float>(fieldOfView.rayCount * 0.01);
  return static_cast<int>(static_cast<float>(height) * hundredth);
}

void Sensor3D::xLogError(const char* method, const char* what, const char* reason) const {
  logTrouble(ko::log::Level::error, kDepthCategory, method, std::string(what) + reason);
}

bool Sensor3D::xSubscribeToHardware() {
  std::lock_guard lock(hardwareMutex);
  try {
    cameraHandle =
        videoDeviceProxy.subscribeCamera(std::string(kClientName) + "Depth", kDepthCamera,
                                         resolution, kDepthColorSpace, 1000 / periodMs + 1);
  } catch (const std::exception& exception) {
    xLogError("xSubscribeToHardware", "Could not subscribe to QVVideoDevice: ", exception.what());
    cameraHandle.clear();
    return false;
  }
  updateTask.start(true);
  return true;
}

bool Sensor3D::xUnsubscribeFromHardware() {
  std::lock_guard lock(hardwareMutex);
  updateTask.stop();
  depthFilter->forgetSpares();
  if (cameraHandle.empty()) return true;
  try {
    videoDeviceProxy.unsubscribe(cameraHandle);
    return true;
  } catch (const std::exception& exception) {
    xLogError("xUnsubscribeFromHardware",
              "Could not unsubscribe from QVVideoDevice: ", exception.what());
    return false;
  }
}

std::vector<Math::MetricalData> Sensor3D::xGetData() const {
  std::lock_guard lock(dataMutex);
  if (data.empty() && emptyAt && ko::Clock::now() - *emptyAt < kMostImageAge) {
    xExcuse("its image shows nothing", true);
  }
  return copyRecords(data);
}

}  // namespace QV::sensor
