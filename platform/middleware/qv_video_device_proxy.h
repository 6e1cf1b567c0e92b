#pragma once

#include "platform/middleware/contracts/video_device_contract.h"
#include "platform/middleware/qv_proxy.h"

namespace QV {

/** The cameras, module "QVVideoDevice". See QVProxy. */
class QV_API QVVideoDeviceProxy : public QVProxy {
 public:
  explicit QVVideoDeviceProxy(const boost::shared_ptr<QVBroker>& broker,
                              const std::string& module = VideoDeviceContract::kModule);

  /** The model code of a camera, by its index. */
  int getCameraModel(int camera) const;
  std::string getCameraName(int camera) const;
  /** Radians. */
  float getHorizontalFOV(int camera) const;
  float getVerticalFOV(int camera) const;

  /**
   * Asks for frames, by the codes of resolution and colour space, at up to `frameRate` per second.
   * Returns the handle that the operations below take.
   */
  std::string subscribeCamera(const std::string& client, int camera, int resolution, int colorSpace,
                              int frameRate) const;
  void unsubscribe(const std::string& handle) const;

  /** The newest frame, to be given back by releaseImage. */
  QVValue getImageRemote(const std::string& handle) const;
  void releaseImage(const std::string& handle) const;
};

}  // namespace QV
