#pragma once

#include <memory>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "platform/api.h"
#include "platform/middleware/dcm_proxy.h"
#include "platform/middleware/qv_broker.h"
#include "platform/middleware/qv_memory_proxy.h"
#include "platform/middleware/qv_motion_proxy.h"
#include "sensor/core/sensor.h"
#include "sensor/real/qv_memory_fast_access.h"

namespace QV::sensor {

/**
 * What every sensor of the robot's hardware stands on: proxies to memory, motion and device
 * manager, and the memory keys it reads. Records are placed in the robot's frame. The destructor
 * does not stop the hardware.
 */
class QV_API RealSensor : public Sensor {
 public:
  /**
   * With keys, the field of view's rayCount becomes their number. A module that is missing:
   * QVError.
   */
  RealSensor(const std::string& name, const std::string& familyName,
             const Math::SensorFieldOfView2D& fieldOfView,
             const std::vector<std::string>& memoryKeys, boost::shared_ptr<QVBroker> broker);
  ~RealSensor() override;

  std::vector<Math::MetricalData> getData() const override;

 protected:
  /** The start of a record: who measures, what it covers, and the device manager's time. */
  Math::MetricalData xGetMetricalDataMeta() const;

  /** The sensor's pose in the robot's ground frame at `time`, from the motion service. */
  Math::Transform xGetTransformAtTime(ko::Clock::time_point time) const;

  /**
   * Replaces the points of each record that is older than `maxAge` at `now` by a wall of obstacles
   * at `range` metres, every `angularStep` radians across its field of view, at the sensor's
   * present place. The record keeps its timestamp. A step
   * that makes no wall, or one of over 100,000 points, leaves no points. Offered to sensors and
   * callers; nothing calls it by itself.
   */
  void xCorrectMetricalDataWithTimestamp(std::vector<Math::MetricalData>& data,
                                         const ko::Clock::time_point& now,
                                         const boost::chrono::milliseconds& maxAge,
                                         QVMotionProxy motion, float range,
                                         float angularStep) const;

  QVMemoryFastAccess fastAccess;
  boost::shared_ptr<QVMemoryProxy> memoryProxy;
  QVMotionProxy motionProxy;
  DCMProxy dcmProxy;
  /** Values that a derived sensor wants kept for its life. */
  std::vector<std::unique_ptr<QVValue>> valuePointers;
  std::vector<std::string> memoryKeys;
};

}  // namespace QV::sensor
