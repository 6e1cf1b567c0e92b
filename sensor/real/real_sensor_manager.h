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
 * The sensors of a robot, real or virtual, as its description lists them: it finds the description
 * and everything else behind a QVBroker.
 *
 * Families are "Sonar", "Laser", "Shovel", "HoleLaser", "BlindZone", "Asus" (depth camera and
 * people) and "Touch", or others with a factory of one's own. While any sensor is started, a task
 * gathers all records, at once after the subscription and then every 100 ms. Readers get copies of
 * the last gathering. When nobody is subscribed, there are no records.
 *
 * - Frames: points are in the sensor's frame S, transforms place S in the robot's ground frame G.
 * - Units: metres, radians, nanoseconds of ko::Clock.
 * - Reserved: without a module "DCM" there are no sensors.
 * - Lifetime: not copyable; keeps the broker alive. The destructor waits for a gathering that runs
 *   and stops the depth camera; other hardware stays as it is, so unsubscribe first.
 * - Threads: thread-safe. Gathering runs on ko's pool, or on the owner of a SimulatedTime.
 * - Errors: no broker is a QVError. A sensor that can't be built is logged at error level and left
 *   out; a sonar without memory keys silently. Enabling and diagnosis neither begin nor end the
 *   gathering: call lookAgain() after either.
 *
 * On a virtual robot:
 *
 *     QV::robot::VirtualRobot porter("robot/descriptions/porter.urdf", map);
 *     QV::sensor::RealSensorManager sensors(porter.getBroker());
 *     const QV::sensor::ScopedSubscription subscription(sensors, "my navigation", {"Laser"});
 *     subscription.awaitRecords(seconds(2));
 *     for (const auto& record : sensors.getMetricalData()) std::cout << record.sensorName << '\n';
 */
class QV_API RealSensorManager : public SensorManager {
 public:
  /** Makes the sensors of the robot's description, of the library's kinds. No broker: QVError. */
  explicit RealSensorManager(boost::shared_ptr<QVBroker> broker);
  /** Makes the sensors, and knows the names of types, that this factory knows. */
  RealSensorManager(boost::shared_ptr<QVBroker> broker, SensorFactory factory);
  /** Waits for a gathering that runs. Stops the depth camera and leaves other hardware as it is. */
  ~RealSensorManager() override;

  /** The kinds of sensors that it can make. */
  const Model::SensorKinds& getKinds() const { return factory.getKinds(); }
  /** The kind of its configuration; null for an unknown name. */
  const Model::SensorKind* findKind(const std::string& sensor) const;

  /** Enables every sensor if it is switched on; changes no sensor if it is switched off. */
  void setSensorsDebug(bool debug) override;

 protected:
  std::vector<Math::MetricalData> xGetData() const override;
  boost::shared_ptr<const std::vector<Math::MetricalData>> xShareData() const override;
  void xOnSensorOnChanged(bool anySensorOn) override;
  /** Gathers once, and notes what the health needs to know of the robot. */
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
  /** The types of sensors, by name. */
  std::map<std::string, int> types;
  std::atomic<bool> updateRunning{false};
  std::mutex updateMutex;
  std::int32_t updatePeriodMs = 100;
  ko::PeriodicTask updateTask;
  /** True every second time: the robot's velocity is asked for by every other refresh. */
  mutable bool hasToldVelocity = false;
  std::int32_t healthPeriodMs = 200;
  std::mutex healthMutex;
  ko::PeriodicTask healthTask;
};

}  // namespace QV::sensor
