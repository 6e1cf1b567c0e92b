#include "platform/middleware/qv_video_device_proxy.h"

#include "platform/middleware/contracts/video_device_contract.h"

namespace QV {

QVVideoDeviceProxy::QVVideoDeviceProxy(const boost::shared_ptr<QVBroker>& broker,
                                       const std::string& module)
    : QVProxy(broker, module) {}

int QVVideoDeviceProxy::getCameraModel(int camera) const {
  return call<int>(VideoDeviceContract::kGetCameraModel, camera);
}

std::string QVVideoDeviceProxy::getCameraName(int camera) const {
  return call<std::string>(VideoDeviceContract::kGetCameraName, camera);
}

float QVVideoDeviceProxy::getHorizontalFOV(int camera) const {
  return call<float>(VideoDeviceContract::kGetHorizontalFOV, camera);
}

float QVVideoDeviceProxy::getVerticalFOV(int camera) const {
  return call<float>(VideoDeviceContract::kGetVerticalFOV, camera);
}

std::string QVVideoDeviceProxy::subscribeCamera(const std::string& client, int camera,
                                                int resolution, int colorSpace,
                                                int frameRate) const {
  return call<std::string>(VideoDeviceContract::kSubscribeCamera, client, camera, resolution,
                           colorSpace, frameRate);
}

void QVVideoDeviceProxy::unsubscribe(const std::string& handle) const {
  callVoid(VideoDeviceContract::kUnsubscribe, handle);
}

QVValue QVVideoDeviceProxy::getImageRemote(const std::string& handle) const {
  return call<QVValue>(VideoDeviceContract::kGetImageRemote, handle);
}

void QVVideoDeviceProxy::releaseImage(const std::string& handle) const {
  callVoid(VideoDeviceContract::kReleaseImage, handle);
}

}  // namespace QV
