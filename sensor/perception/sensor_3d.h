#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>
#include <opencv2/core.hpp>

#include "platform/api.h"
#include "platform/ko/periodic_task.h"
#include "platform/math/position.h"
#include "platform/middleware/qv_broker.h"
#include "platform/middleware/qv_motion_proxy.h"
#include "platform/middleware/qv_video_device_proxy.h"
#include "platform/vision/qv_image.h"
#include "sensor/core/sensor.h"

namespace QV::sensor {

class DepthFilter;

/**
 * The depth camera: cuts each image into connected components and reports each as a record.
 *
 * While it is subscribed it takes an image every 100 ms. A component counts if it covers at least
 * 1 % of the image. Records come in the order of the components' first pixels, with the camera's
 * pose and the time of the image.
 *
 * - Frames: S is the camera's frame, x along the optical axis, y to the left, z up. Points are in
 *   S; the transform places S in the robot's ground frame G at the time of the image.
 * - Units: metres, radians; depth in the image is in millimetres.
 * - Special values: depth 0 is no measurement. The field of view's rayCount is the image's width in
 *   pixels, so one ray is one column.
 * - Lifetime: the destructor stops the camera. After a restart, readers get the records of the last
 *   image until a new image arrives.
 * - Threads: thread-safe; a task of its own takes the images.
 * - Errors: a failed image is logged, and the last good one stays. The camera's opening angles are
 *   requested once per process.
 *
 * The nearest point of each component:
 *
 *     const QV::sensor::ScopedSubscription subscription(manager, "my navigation", {"DepthCamera"});
 *     subscription.awaitRecords(boost::chrono::seconds(2));
 *     for (const auto& record : manager.getMetricalData("DepthCamera")) {
 *       float nearest = record.fieldOfView.maxRange;
 *       for (const auto& point : record.points) nearest = std::min(nearest, point.x);
 *       std::cout << record.points.size() << " pixels from " << nearest << " m on\n";
 *     }
 */
class QV_API Sensor3D : public Sensor {
 public:
  /** Makes the proxies. Throws QVError for a missing module or a camera without a model. */
  Sensor3D(const std::string& name, const std::string& familyName,
           boost::shared_ptr<QVBroker> broker, const Math::SensorFieldOfView2D& fieldOfView);
  /** Stops the camera. */
  ~Sensor3D() override;

 protected:
  using Points = std::vector<Math::Position3D>;

  std::vector<Math::MetricalData> xGetData() const override;
  bool xSubscribeToHardware() override;
  bool xUnsubscribeFromHardware() override;

  /** Returns the code of the resolution that the camera is asked for. */
  int xGetCameraResolution();
  /** Returns 1 % of the image's pixels; also sets the field of view's rayCount. */
  int xInitFilteringBlobSize();

  /** Takes one image, from asking for it to publishing its records. */
  void xUpdateScan();
  void xTryReleaseImage();

  /** Finds the image's components and their points; false for an image that fails. */
  bool xFilterScan(QVImage& image, std::vector<Points>& scans);
  /**
   * Appends the points of each component, and drops the lists of fewer than 1 % of the pixels.
   * `labels` has the size of `depth`, which is 16-bit; no label is negative.
   */
  void xComputeXYZCoordinates(const cv::Mat& depth, const cv::Mat_<int>& labels,
                              std::vector<Points>& scans);
  /** Moves the points into new records, and keeps the old records' memory for reuse. */
  void xPublish(std::vector<Points>& scans, const Math::Transform& sensorTransform,
                ko::Clock::time_point timestamp);

 private:
  Math::Transform xGetTransformAtTime(ko::Clock::time_point time) const;
  void xKeepPixelBeyond() const;
  void xLogError(const char* method, const char* what, const char* reason) const;

  QVVideoDeviceProxy videoDeviceProxy;
  QVMotionProxy motionProxy;
  int resolution;
  std::vector<Math::MetricalData> data;
  /** The time of the last image that had no component. */
  std::optional<ko::Clock::time_point> emptyAt;
  mutable std::mutex dataMutex;
  int filteringBlobSize;
  int periodMs = 100;
  std::string cameraHandle;

  // These members keep their memory, so that images of the same size need no allocation.
  std::unique_ptr<DepthFilter> depthFilter;
  std::vector<Points> scans;
  // The former records, without their points, for reuse.
  std::vector<Math::MetricalData> replaced;

  ko::PeriodicTask updateTask;
  std::mutex hardwareMutex;
};

}  // namespace QV::sensor
