#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "platform/api.h"
#include "platform/ko/periodic_task.h"
#include "platform/middleware/qv_broker.h"
#include "sensor/core/sensor_manager.h"
#include "sensor/real/sensor_factory.h"

namespace QV::sensor {

/**
 * The sensors of a robot, as its description lists them: families "Sonar", "Laser", "Shovel",
 * "HoleLaser", "BlindZone", "Asus" (depth camera and people) and "Touch", or others with a factory
 * of one's own. From a subscription that
 * leaves any of them started until one that leaves none, their records are gathered at once and
 * then every 100 ms on the event loop's threads, and readers never wait for hardware; afterwards
 * there are no records. Enabling and diagnosis don't begin or end that: lookAgain() does, after
 * either. Not copyable. Any thread may call any operation.
 */
class QV_API RealSensorManager : public SensorManager {
 public:
  /**
   * No sensors without a module "DCM". What can't be built is logged at error level and left out,
   * a sonar without memory keys silently. No broker: QVError.
   */
  explicit RealSensorManager(boost::shared_ptr<QVBroker> broker);
  /** With the sensors, and the names of their types, that this factory knows. */
  RealSensorManager(boost::shared_ptr<QVBroker> broker, SensorFactory factory);
  /** Waits for a gathering that runs. Leaves hardware as it is, but stops the depth camera. */
  ~RealSensorManager() override;

  /** The kinds of sensors that it can make. */
  const Model::SensorKinds& getKinds() const { return factory.getKinds(); }
  /** The kind of its configuration; null for an unknown name. */
  const Model::SensorKind* findKind(const std::string& sensor) const;

  /** Switching it on enables every sensor; switching it off changes no sensor. */
  void setSensorsDebug(bool debug) override;

 protected:
  std::vector<Math::MetricalData> xGetData() const override;
  boost::shared_ptr<const std::vector<Math::MetricalData>> xShareData() const override;
  void xOnSensorOnChanged(bool anySensorOn) override;
  /** One gathering, and what its health needs to know of the robot. */
  void xRefresh() const;

 private:
  void xInit();
  void xInitSensors();
  void xCreate(const SensorOrder& order);
  void xAddSensor(boost::shared_ptr<Sensor> sensor);
  void xDescribeHealth(const Sensor& sensor, const SensorOrder& order);
  void xTellHealth() const;
  void xWatchHealth();
  void xLookAtHealth();

  bool dcmPresent = false;
  std::atomic<bool> sensorsDebug{false};
  boost::shared_ptr<QVBroker> broker;
  SensorFactory factory;
  /** Of sensors, by name. */
  std::map<std::string, int> types;
  std::atomic<bool> updateRunning{false};
  std::mutex updateMutex;
  std::int32_t updatePeriodMs = 100;
  ko::PeriodicTask updateTask;
  /** Told of every second time: the refresh's own. */
  mutable bool hasToldVelocity = false;
  std::int32_t healthPeriodMs = 200;
  std::mutex healthMutex;
  ko::PeriodicTask healthTask;
};

}  // namespace QV::sensor
