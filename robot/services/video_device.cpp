#include "robot/services/video_device.h"

#include <stdexcept>

#include <boost/make_shared.hpp>

#include "platform/middleware/contracts/video_device_contract.h"
#include "robot/services/internal/input_listener.h"
#include "robot/services/internal/spare_bytes.h"

namespace QV::robot {

using Lock = std::lock_guard<std::mutex>;

VideoDevice::VideoDevice()
    : QVModule(VideoDeviceContract::kModule), spares(std::make_unique<SpareBytes>()) {
  xBindCameras();
  xBindClients();
}

VideoDevice::~VideoDevice() = default;

void VideoDevice::addCamera(const Camera& camera) {
  const std::string name = "camera " + std::to_string(camera.index);
  if (!camera.source) throw std::invalid_argument("VideoDevice: " + name + " has no source");
  Lock lock(mutex);
  if (!devices.emplace(camera.index, boost::make_shared<Device>(camera)).second) {
    throw std::invalid_argument("VideoDevice: " + name + " exists already");
  }
}

void VideoDevice::removeCamera(int index) {
  Lock lock(mutex);
  if (devices.erase(index) == 0) {
    throw std::invalid_argument("VideoDevice: no camera " + std::to_string(index));
  }
}

std::vector<std::string> VideoDevice::getHandles() const {
  Lock lock(mutex);
  std::vector<std::string> handles;
  handles.reserve(clients.size());
  for (const auto& entry : clients) handles.push_back(entry.first);
  return handles;
}

void VideoDevice::xBindCameras() {
  using namespace VideoDeviceContract;
  bindMethod(kGetCameraModel, [this](int index) { return xDevice(index)->camera.modelCode; });
  bindMethod(kGetCameraName, [this](int index) { return xDevice(index)->camera.name; });
  bindMethod(kGetHorizontalFOV, [this](int i) { return xDevice(i)->camera.horizontalFOV; });
  bindMethod(kGetVerticalFOV, [this](int index) { return xDevice(index)->camera.verticalFOV; });
}

void VideoDevice::xBindClients() {
  using namespace VideoDeviceContract;
  bindMethod(kSubscribeCamera, &VideoDevice::xSubscribe, this);
  bindMethod(kGetImageRemote, &VideoDevice::xGetImage, this);
  bindMethod(kGetHandles, &VideoDevice::getHandles, this);
  bindMethod(kReleaseImage, [this](const std::string& handle) {
    Lock lock(mutex);
    xClient(handle).holdsImage = false;
  });
  bindMethod(kUnsubscribe, [this](const std::string& handle) {
    Lock lock(mutex);
    if (clients.erase(handle) == 0 && !xWasGiven(handle)) xClient(handle);
  });
}

boost::shared_ptr<VideoDevice::Device> VideoDevice::xDevice(int index) const {
  Lock lock(mutex);
  const auto found = devices.find(index);
  if (found == devices.end()) throw std::runtime_error("no camera " + std::to_string(index));
  return found->second;
}

void InputTap::set(VideoDevice& cameras, InputListener* listener) {
  cameras.listener = listener;
}

}  // namespace QV::robot
