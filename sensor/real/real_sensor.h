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
 * The base of every sensor that the robot's middleware knows: proxies to memory, motion service and
 * device manager, and the memory keys that it reads.
 * - Frames: points are in the sensor's frame S; the transform places S in the robot's ground frame
 *   G at the time of the measurement.
 * - Units: metres, radians. The device manager counts milliseconds modulo 2^32.
 * - Lifetime: keeps the broker's modules by name only. The destructor does not stop the hardware.
 * - Threads: as Sensor.
 * - Errors: a missing module throws QVError from the constructor; an exception of a module in a
 *   later call reaches the caller of the operation.
 *
 *     class Ranger : public QV::sensor::RealSensor {
 *      public:
 *       using RealSensor::RealSensor;
 *
 *      protected:
 *       bool xSubscribeToHardware() override { return true; }
 *       bool xUnsubscribeFromHardware() override { return true; }
 *       std::vector<QV::Math::MetricalData> xGetData() const override {
 *         auto record = xGetMetricalDataMeta();
 *         record.sensorTransform = xGetTransformAtTime(record.timestamp);
 *         record.points = {{memoryProxy->getData(memoryKeys.at(0)).toFloat(), 0.0f, 0.0f}};
 *         return {record};
 *       }
 *     };
 */
class QV_API RealSensor : public Sensor {
 public:
  /** With keys, the field of view's rayCount becomes their number. */
  RealSensor(const std::string& name, const std::string& familyName,
             const Math::SensorFieldOfView2D& fieldOfView,
             const std::vector<std::string>& memoryKeys, boost::shared_ptr<QVBroker> broker);
  ~RealSensor() override;

  std::vector<Math::MetricalData> getData() const override;

 protected:
  /** Begins a record: sensor, field of view, and the device manager's time. */
  Math::MetricalData xGetMetricalDataMeta() const;

  /** Asks the motion service where S was in G at `time`. */
  Math::Transform xGetTransformAtTime(ko::Clock::time_point time) const;

  /** For your own sensors: replaces the points of each record that is older than `maxAge` at `now`
   * by a wall of obstacles at `range` metres, one every `angularStep` radians across its field of
   * view (at most 100,000; none if the step makes no wall), at the sensor's present place. The
   * timestamp stays. The interface passes the proxy by value. */
  void xCorrectMetricalDataWithTimestamp(std::vector<Math::MetricalData>& data,
                                         const ko::Clock::time_point& now,
                                         const boost::chrono::milliseconds& maxAge,
                                         QVMotionProxy motion, float range,
                                         float angularStep) const;

  /** Pointers to keys, for sensors of one's own: no sensor of the library connects any. */
  QVMemoryFastAccess fastAccess;
  boost::shared_ptr<QVMemoryProxy> memoryProxy;
  QVMotionProxy motionProxy;
  DCMProxy dcmProxy;
  /** Values for a derived sensor to keep. The interface has the list; nothing here fills it. */
  std::vector<std::unique_ptr<QVValue>> valuePointers;
  /** The keys of the description, in its order. */
  std::vector<std::string> memoryKeys;
};

}  // namespace QV::sensor
