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

namespace QV {
class QVMotionProxy;
}

namespace QV::sensor {

/**
 * Manages the sensors of a robot, real or virtual. It gets the description, and all data, through a
 * QVBroker. Families are "Sonar", "Laser", "Shovel", "HoleLaser", "BlindZone", "Asus" (depth camera
 * and people) and "Touch". A factory of your own can add families. While any sensor is started, a
 * task refreshes all records every 100 ms, the first time at once. Readers get copies of the last
 * refresh. Without subscribers there are no records.
 *
 * - Frames: points are in the sensor's frame S, transforms place S in the robot's ground frame G.
 * - Units: metres, radians, nanoseconds of ko::Clock.
 * - Requires: the module "DCM"; without it there are no sensors.
 * - Lifetime: not copyable; keeps the broker alive. The destructor waits for a refresh in progress,
 *   then stops the depth camera. It does not stop other hardware: unsubscribe first.
 * - Threads: thread-safe. The refresh runs on ko's pool, or on the owner of a SimulatedTime.
 *   enableSensorOrFamily() and setSensorDiagnosis() do not start or stop the refresh; call
 *   lookAgain() after them.
 * - Errors: a null broker throws QVError. A sensor that can't be built is logged at error level and
 *   left out. A sonar without memory keys is left out without a log line.
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
  /** Builds the sensors of the description, with the library's kinds. Throws QVError for a null
   * broker. */
  explicit RealSensorManager(boost::shared_ptr<QVBroker> broker);
  /** Builds the sensors with the kinds and creators of `factory`. */
  RealSensorManager(boost::shared_ptr<QVBroker> broker, SensorFactory factory);
  /** Waits for a refresh in progress, then stops the depth camera. Other hardware stays as it is.
   */
  ~RealSensorManager() override;

  /** The kinds of sensors that it can make. */
  const Model::SensorKinds& getKinds() const { return factory.getKinds(); }
  /** Returns the kind of a sensor, by its name; null if unknown. */
  const Model::SensorKind* findKind(const std::string& sensor) const;

  /** Enables every sensor for true; changes none for false. */
  void setSensorsDebug(bool debug) override;

 protected:
  std::vector<Math::MetricalData> xGetData() const override;
  boost::shared_ptr<const std::vector<Math::MetricalData>> xShareData() const override;
  void xOnSensorOnChanged(bool anySensorOn) override;
  /** Refreshes once, and stores the robot's velocity for health. */
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
  /** Null until the robot's velocity was asked for. */
  mutable boost::shared_ptr<const QVMotionProxy> motion;
  /** Toggles at each refresh: every second one asks for the robot's velocity. */
  mutable bool hasToldVelocity = false;
  std::int32_t healthPeriodMs = 200;
  std::mutex healthMutex;
  ko::PeriodicTask healthTask;
};

}  // namespace QV::sensor
