#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>
#include <opencv2/core.hpp>

#include "platform/api.h"
#include "platform/ko/clock.h"
#include "platform/middleware/qv_module.h"
#include "platform/middleware/qv_value.h"

namespace QV::robot {

class InputListener;
struct InputTap;
class SpareBytes;

/**
 * Sets `depth` to the frame that a camera sees at `time`: millimetres, 0 for no depth. `depth`
 * comes in the wanted size; a frame of another size is sampled to that size (nearest pixel). An
 * empty frame means that there is none yet. For an older frame the function sets `time` to that of
 * the frame. The client that asked gets its exceptions as errors.
 */
using FrameSource =
    std::function<void(cv::Mat_<std::uint16_t>& depth, ko::Clock::time_point& time)>;

/** A depth camera of the robot. */
struct QV_API Camera {
  int index = 0;
  /** The camera's name, which is also that of its frame. */
  std::string name;
  int modelCode = 0;
  /** Radians. */
  float horizontalFOV = 0.0f;
  float verticalFOV = 0.0f;
  /** Called by one thread at a time. */
  FrameSource source;
};

/**
 * The cameras: module "QVVideoDevice", whose methods QVVideoDeviceProxy describes. Thread-safe.
 * A client that asks before its next frame is due gets its last one again. An image that it still
 * holds is then released, which is logged once. A handle is the client's name and a number that is
 * never used again; to unsubscribe it twice is no error.
 */
class QV_API VideoDevice : public QVModule {
 public:
  VideoDevice();
  ~VideoDevice() override;

  /** Adds a camera. std::invalid_argument for an index in use, or a camera without a source. */
  void addCamera(const Camera& camera);
  /** Removes a camera. Its clients keep their handles and get errors until a camera of this index
   * is added again. */
  void removeCamera(int index);

  /** Returns the handles of all clients, sorted. */
  std::vector<std::string> getHandles() const;

 private:
  friend struct InputTap;

  struct Device {
    explicit Device(const Camera& camera) : camera(camera) {}
    const Camera camera;
    std::mutex capturing;
  };

  struct Client {
    int camera;
    cv::Size size;
    ko::Duration interval;
    QVValue image = QVValue();
    ko::Clock::time_point taken = ko::Clock::time_point();
    bool holdsImage = false;
    bool warned = false;
  };

  void xBindCameras();
  void xBindClients();
  boost::shared_ptr<Device> xDevice(int index) const;
  Client& xClient(const std::string& handle);
  /** True if the handle was given, now or earlier. */
  bool xWasGiven(const std::string& handle) const;
  std::string xSubscribe(const std::string& name, int camera, int resolution, int colorSpace,
                         int frameRate);
  QVValue xGetImage(const std::string& handle);
  void xTakeBack(const std::string& handle, Client& client) const;
  QVValue xCapture(Device& device, const std::string& handle, cv::Size size,
                   ko::Clock::time_point time);

  mutable std::mutex mutex;
  std::map<int, boost::shared_ptr<Device>> devices;
  std::map<std::string, Client> clients;
  const std::unique_ptr<SpareBytes> spares;
  /** The clients to whom the first, second, ... handle was given. */
  std::vector<std::string> names;
  std::atomic<InputListener*> listener{nullptr};
};

}  // namespace QV::robot
