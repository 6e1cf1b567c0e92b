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
 * and people) and "Touch"; a factory of your own can add some. Touches and people need a
 * NavigationModule, which passes their events on.
 *
 * While any sensor is started, a task reads all sensors (the refresh), and repeats 100 ms after the
 * end of each run. Readers get the records of the last run; without subscribers there are none.
 * - Frames: points are in the sensor's frame S, transforms place S in the robot's ground frame G.
 * - Units: metres, radians, nanoseconds of ko::Clock.
 * - Requires: the module "DCM"; without it there are no sensors. Make one manager per broker: each
 *   counts its own subscribers only, and stops hardware after the last of them.
 * - Lifetime: not copyable; keeps the broker alive. The destructor waits for a refresh in progress,
 *   then stops the depth camera. It does not stop other hardware: unsubscribe first.
 * - Threads: thread-safe. The refresh runs on ko's pool, or on the owner of a SimulatedTime.
 * - Errors: a sensor that can't be built is logged at error level and left out; a sonar without
 *   memory keys is left out without a log line.
 *
 *     QV::sensor::RealSensorManager sensors(robot.getBroker());
 *     const QV::sensor::ScopedSubscription subscription(sensors, "my navigation", {"Laser"});
 *     subscription.awaitRecords(boost::chrono::seconds(2));
 *     for (const auto& record : sensors.getMetricalData()) std::cout << record.sensorName << '\n';
 */
class QV_API RealSensorManager : public SensorManager {
 public:
  /** Builds the sensors of the description, with the library's kinds. Throws QVError for a null
   * broker. */
  explicit RealSensorManager(boost::shared_ptr<QVBroker> broker);
  /** Builds the sensors with the kinds and creators of `factory`. */
  RealSensorManager(boost::shared_ptr<QVBroker> broker, SensorFactory factory);
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
