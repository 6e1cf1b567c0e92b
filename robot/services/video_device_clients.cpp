#include <stdexcept>

#include <opencv2/imgproc.hpp>

#include "platform/ko/internal/call_lock.h"
#include "platform/ko/log.h"
#include "platform/middleware/contracts/video_device_contract.h"
#include "platform/model/internal/number_text.h"
#include "platform/vision/qv_image.h"
#include "robot/services/internal/input_listener.h"
#include "robot/services/internal/spare_bytes.h"
#include "robot/services/video_device.h"

namespace QV::robot {

using Lock = std::lock_guard<std::mutex>;

VideoDevice::Client& VideoDevice::xClient(const std::string& handle) {
  const auto found = clients.find(handle);
  if (found == clients.end()) throw std::runtime_error("no client \"" + handle + "\"");
  return found->second;
}

std::string VideoDevice::xSubscribe(const std::string& name, int camera, int resolution,
                                    int colorSpace, int frameRate) {
  const auto refuse = [](const std::string& expected, int given) {
    throw std::invalid_argument(expected + " expected, " + std::to_string(given) + " given");
  };
  xDevice(camera);
  int width = 0;
  int height = 0;
  setSizeFromResolution(resolution, width, height);
  if (colorSpace != kDepthColorSpace) refuse("color space 17", colorSpace);
  if (frameRate <= 0) refuse("a frame rate above 0", frameRate);
  if (name.empty()) throw std::invalid_argument("a client name expected, none given");
  // Rounded up: never more frames than asked for.
  const ko::Duration interval((ko::Duration(boost::chrono::seconds(1)).count() + frameRate - 1) /
                              frameRate);
  Lock lock(mutex);
  names.push_back(name);
  std::string handle = name + "_" + std::to_string(names.size());
  clients.emplace(handle, Client{camera, {width, height}, interval});
  return handle;
}

bool VideoDevice::xWasGiven(const std::string& handle) const {
  const auto number = Model::toInteger(handle.substr(handle.rfind('_') + 1));
  if (!number || *number <= 0 || *number > static_cast<long long>(names.size())) return false;
  return handle == names[static_cast<std::size_t>(*number) - 1] + "_" + std::to_string(*number);
}

QVValue VideoDevice::xGetImage(const std::string& handle) {
  const auto now = ko::Clock::now();
  Client asked;
  {
    Lock lock(mutex);
    Client& client = xClient(handle);
    xTakeBack(handle, client);
    // A clock that went back is no reason to show the old image until it has caught up.
    const bool due = now < client.taken || now - client.taken >= client.interval;
    client.holdsImage = client.image.isValid() && !due;
    if (client.holdsImage) return client.image;
    asked = client;
  }
  // The lock is not held here, because a source may take long.
  QVValue image = xCapture(*xDevice(asked.camera), handle, asked.size, now);
  Lock lock(mutex);
  Client& client = xClient(handle);
  client.image = image;
  client.taken = now;
  client.holdsImage = image.isValid();
  return image;
}

void VideoDevice::xTakeBack(const std::string& handle, Client& client) const {
  if (!client.holdsImage || client.warned) return;
  client.warned = true;
  ko::log::warning(VideoDeviceContract::kModule, VideoDeviceContract::kGetImageRemote)
      << handle << " asks for an image while it holds one, which is taken back";
}

QVValue VideoDevice::xCapture(Device& device, const std::string& handle, cv::Size size,
                              ko::Clock::time_point time) {
  const auto pixels = spares->take(static_cast<std::size_t>(size.area()) * 2);
  const cv::Mat_<std::uint16_t> wanted(size.height, size.width,
                                       reinterpret_cast<std::uint16_t*>(pixels->data()));
  cv::Mat_<std::uint16_t> frame = wanted;
  {
    // Held until the pixels are ours: a source may show a frame that it fills anew at its next
    // call.
    ko::detail::CallLock lock(device.capturing, "the image", handle);
    device.camera.source(frame, time);
    if (frame.empty()) return QVValue();
    if (frame.data != wanted.data || frame.size() != size) {
      if (frame.data == wanted.data) frame = frame.clone();
      cv::resize(frame, wanted, size, 0.0, 0.0, cv::INTER_NEAREST);
    }
  }
  const auto stamp =
      boost::chrono::duration_cast<boost::chrono::microseconds>(time.time_since_epoch());
  QVValue image =
      QVImage(size.width, size.height, kDepthColorSpace, stamp.count(), pixels).toQVValue();
  if (InputListener* const hears = listener) hears->onImage(device.camera.index, image);
  return image;
}

}  // namespace QV::robot
