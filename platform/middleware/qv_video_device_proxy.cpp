#include "platform/middleware/qv_video_device_proxy.h"

namespace QV {

QVVideoDeviceProxy::QVVideoDeviceProxy(const boost::shared_ptr<QVBroker>& broker,
                                       const std::string& module)
    : QVProxy(broker, module) {}

int QVVideoDeviceProxy::getCameraModel(int camera) const {
  return call<int>("getCameraModel", camera);
}

std::string QVVideoDeviceProxy::getCameraName(int camera) const {
  return call<std::string>("getCameraName", camera);
}

float QVVideoDeviceProxy::getHorizontalFOV(int camera) const {
  return call<float>("getHorizontalFOV", camera);
}

float QVVideoDeviceProxy::getVerticalFOV(int camera) const {
  return call<float>("getVerticalFOV", camera);
}

std::string QVVideoDeviceProxy::subscribeCamera(const std::string& client, int camera,
                                                int resolution, int colorSpace,
                                                int frameRate) const {
  return call<std::string>("subscribeCamera", client, camera, resolution, colorSpace, frameRate);
}

void QVVideoDeviceProxy::unsubscribe(const std::string& handle) const {
  callVoid("unsubscribe", handle);
}

QVValue QVVideoDeviceProxy::getImageRemote(const std::string& handle) const {
  return call<QVValue>("getImageRemote", handle);
}

void QVVideoDeviceProxy::releaseImage(const std::string& handle) const {
  callVoid("releaseImage", handle);
}

}  // namespace QV
