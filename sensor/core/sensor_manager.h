#pragma once

#include <atomic>
#include <initializer_list>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <boost/function.hpp>
#include <boost/shared_ptr.hpp>
#include <boost/thread/mutex.hpp>
#include <boost/thread/shared_mutex.hpp>

#include "platform/api.h"
#include "platform/math/metrical_data.h"
#include "platform/math/pose2d.h"
#include "sensor/core/sensor.h"
#include "sensor/core/sensor_health.h"

namespace QV::sensor {

class HealthBoard;
struct HealthInside;

/**
 * All sensors of a robot, by name and by family. Navigation code needs only this class.
 *
 * A caller subscribes under a name of its own to sensors or families, and reads the records of
 * every sensor that runs. "Sonar" is a family, "FrontSonar" a sensor; if both share a name, the
 * name means the family. SimulatedSensorManager and RealSensorManager derive from it; you can, too.
 * - Frames: M is the map, G the robot's ground frame, S the sensor's frame. Points are in S, and a
 *   record's transform places S in G. Of simulated sensors, points are in G, and the transform
 *   places S in M.
 * - Units: metres, radians, nanoseconds of ko::Clock.
 * - Special values: an unknown name gives false or an empty result. subscribe(), unsubscribe(),
 *   enableSensorOrFamily(), getSensorsByFamily(), getSensorPtr(), setHealthLimit() and getHealth()
 *   also log it.
 * - Lifetime: not copyable. Subscriptions end with unsubscribe(), not with the caller: see
 *   ScopedSubscription. No call may run during destruction.
 * - Threads: thread-safe. Reading never waits for hardware; subscribing, enabling and diagnosing
 *   may.
 * - Errors: a failed reading is logged and gives no record; the other records are returned. If a
 *   module fails at a start or stop, a sensor of the library logs it and gets a bad diagnosis. If a
 *   start or stop of a sensor class of your own throws, the exception reaches the caller. After
 *   such a start the subscriber stays, later sensors are left out, and the refresh does not start:
 *   subscribe again, or call lookAgain() for the sensors that run. A ScopedSubscription undoes all.
 *
 *     const QV::sensor::ScopedSubscription subscription(manager, "my navigation", {"Sonar"});
 *     subscription.awaitRecords(boost::chrono::seconds(2));
 *     for (const auto& record : manager.getMetricalData("Sonar"))
 *       for (const auto& point : record.points)
 *         std::cout << record.sensorName << ": " << std::hypot(point.x, point.y) << " m\n";
 */
class QV_API SensorManager {
 public:
  SensorManager();
  virtual ~SensorManager();
  SensorManager(const SensorManager&) = delete;
  SensorManager& operator=(const SensorManager&) = delete;

  /** Switches the debug mode. On, it enables all sensors of a RealSensorManager. */
  virtual void setSensorsDebug(bool debug) = 0;
  /** Sets the pose of a simulated robot in M; others log a warning. Rays start at `scanPose`,
   * records say `referencePose`; they differ only to simulate errors of localization. */
  virtual void setPose2D(const Math::Pose2D& scanPose, const Math::Pose2D& referencePose);

 protected:
  /** Returns the records of all started sensors. */
  virtual std::vector<Math::MetricalData> xGetData() const = 0;
  /** Shares what xGetData() returns. Managers with a cache override it to return xShareCache(). */
  virtual boost::shared_ptr<const std::vector<Math::MetricalData>> xShareData() const;
  /** Called by lookAgain() and after each (un)subscribing; true if any sensor is started. */
  virtual void xOnSensorOnChanged(bool anySensorOn) = 0;

 public:
  /** Subscribes to every family, to one name, or to several. Waits while hardware starts. True if a
   * sensor gained the subscriber, so a second call is false. Several names are handled in
   * alphabetical order: one that gains the subscriber sets the result to true, an unknown one to
   * false; the last of them counts. */
  bool subscribe(const std::string& subscriber);
  bool subscribe(const std::string& subscriber, const std::string& name);
  bool subscribe(const std::string& subscriber, const std::set<std::string>& names);
  bool subscribe(const std::string& subscriber, std::initializer_list<std::string> names);

  /** Unsubscribes likewise; true if at least one sensor lost the subscriber. */
  bool unsubscribe(const std::string& subscriber);
  bool unsubscribe(const std::string& subscriber, const std::string& name);
  bool unsubscribe(const std::string& subscriber, const std::set<std::string>& names);
  bool unsubscribe(const std::string& subscriber, std::initializer_list<std::string> names);

  /** Starts the refresh if any sensor runs, and stops it if none does, as a subscription does. */
  void lookAgain();

  /** Enables or disables a sensor or a family; false for an unknown name. This and the next don't
   * start or stop the refresh: call lookAgain() after them. */
  bool enableSensorOrFamily(const std::string& name, bool enable);
  /** Sets a sensor's diagnosis; false if there is no such sensor. */
  bool setSensorDiagnosis(const std::string& sensorName, bool success);

  /** Names of families and sensors, in alphabetical order. */
  std::set<std::string> getFamilyNames() const;
  std::set<std::string> getSensorList() const;
  std::map<std::string, std::set<std::string>> getAllSensorsByFamily() const;
  std::set<std::string> getSensorsByFamily(const std::string& family) const;
  std::set<std::string> getSensorListBySubscriber(const std::string& subscriber) const;
  std::set<std::string> getSubscribers() const;
  /** The sensors that are enabled and have a good diagnosis, started or not. */
  std::set<std::string> getEnabledSensorList() const;

  /** True if the hardware runs. This and the next three return false for an unknown sensor, without
   * a log line. Only isSensorSubscribedBy() waits for a start or stop. */
  bool isSensorStarted(const std::string& sensorName) const;
  bool isSensorEnabled(const std::string& sensorName) const;
  bool isSensorDiagnosisSuccess(const std::string& sensorName) const;
  bool isSensorSubscribedBy(const std::string& sensorName, const std::string& subscriber) const;

  bool isSensor(const std::string& name) const { return xIsSensor(name); }
  bool isFamily(const std::string& name) const { return xIsFamily(name); }
  /** The sensor of that name; null for an unknown one. */
  boost::shared_ptr<Sensor> getSensorPtr(const std::string& sensorName) const;

  /** Copies the latest records of all started sensors, in the order of their names. With names: of
   * these families and sensors, name by name; a sensor that two names select is returned twice. The
   * real manager returns the records of its last refresh, as a rule at most 0.1 s ago; the
   * simulated one measures anew. */
  std::vector<Math::MetricalData> getMetricalData() const;
  std::vector<Math::MetricalData> getMetricalData(const std::string& name) const;
  std::vector<Math::MetricalData> getMetricalData(const std::set<std::string>& names) const;
  std::vector<Math::MetricalData> getMetricalData(std::initializer_list<std::string> names) const;
  /** Shares the records of all started sensors. The real manager does not copy them. */
  boost::shared_ptr<const std::vector<Math::MetricalData>> shareMetricalData() const;

  /** See Sensor::getLastTrouble(); also for a sensor of the description that could not be built. */
  std::optional<ko::log::Record> getLastTrouble(const std::string& sensorName) const;

  /** Logs an error about a sensor and keeps it as its last error, whether or not it was built. */
  void logTrouble(const std::string& sensorName, std::string_view category, std::string_view method,
                  const std::string& message) const;

  /** Judges a sensor by its records and hardware; never waits. A sensor that could not be built is
   * failing. Nothing, and a warning, for an unknown name. */
  std::optional<SensorHealth> getHealth(const std::string& sensorName) const;
  /** The health of all sensors, by name. */
  std::map<std::string, SensorHealth> getHealth() const;
  using HealthCallback = boost::function<void(const std::string& sensor, const SensorHealth&)>;
  /** Sets the callback for changes of a state; an empty one removes it. It runs on the thread that
   * found the change, the health task's or a caller's: one change at a time, in order. */
  void onHealthChanged(HealthCallback callback);
  /** Switches the watching of health on (the default) or off. While it is off, a sensor that runs
   * counts as sound. A RealSensorManager watches from its construction, others from the first
   * getHealth() or onHealthChanged(). */
  void watchHealth(bool on);
  /** Changes a limit of a sensor, of a family or, without a name, of all; a rule without a value
   * switches it off. False, and a warning, for an unknown name. */
  bool setHealthLimit(const HealthRule& rule);
  /** The limit; nothing if it is switched off, and for an unknown sensor. */
  std::optional<double> getHealthLimit(const std::string& sensorName, HealthLimit limit) const;

  /** A number of a SimulatedSensorManager that depends on its kind, without unit; 0 in other
   * managers. It is for callers: the library does not use it. */
  float getKindParameter() const { return kindParameter; }

 protected:
  /** The next five need a known name. For any other they return false; all but xEnableSensor() also
   * log an error. */
  bool xSubscribeToFamily(const std::string& subscriber, const std::string& family);
  bool xSubscribeToSensor(const std::string& subscriber, const std::string& sensorName);
  bool xUnsubscribeFromFamily(const std::string& subscriber, const std::string& family);
  bool xUnsubscribeFromSensor(const std::string& subscriber, const std::string& sensorName);
  bool xEnableSensor(const std::string& sensorName, bool enable);

  /** Gathers the records of all sensors, in the order of their names, into the cache. Leaves out a
   * sensor that throws, and logs the first of its exceptions in a row. */
  void xUpdateData() const;
  /** Replaces the cache. */
  void xSetData(std::vector<Math::MetricalData> records) const;
  /** Copies the cache. */
  std::vector<Math::MetricalData> xCopyData() const;
  /** Shares the cache itself: records that nobody changes any more. */
  boost::shared_ptr<const std::vector<Math::MetricalData>> xShareCache() const;

  bool xIsSensor(const std::string& name) const { return sensors.count(name) > 0; }
  bool xIsFamily(const std::string& name) const { return families.count(name) > 0; }
  bool xIsAnySensorOn() const;

  /** Filled by a derived manager's constructor; they never change afterwards. */
  std::map<std::string, std::set<std::string>> families;
  std::map<std::string, boost::shared_ptr<Sensor>> sensors;
  float kindParameter = 0.0f;

 private:
  friend struct HealthInside;

  HealthBoard& xGetHealth() const;
  using NameOperation = bool (SensorManager::*)(const std::string&, const std::string&);

  bool xForEachName(const std::string& subscriber, const std::set<std::string>& names,
                    const char* method, const char* what, NameOperation onFamily,
                    NameOperation onSensor);
  bool xForEachMember(const std::string& subscriber, const std::string& family, const char* method,
                      NameOperation onSensor);
  Sensor* xFindSensor(const std::string& sensorName) const;
  template <typename Predicate>
  std::set<std::string> xNamesOfSensors(Predicate predicate) const;
  void xGather(const std::string& name, const Sensor& sensor,
               std::vector<Math::MetricalData>& records) const;
  void xNoteFailure(const std::string& name, const Sensor& sensor, const char* reason) const;
  /** Notes how gathering a sensor's records went; true if it went otherwise the last time. */
  bool xChangesGathering(const std::string& sensorName, bool success) const;

  /** The cache. Its records are immutable: the lock guards only the pointer. */
  mutable boost::shared_ptr<const std::vector<Math::MetricalData>> data;
  /** Null until somebody asks; owned. */
  mutable std::atomic<HealthBoard*> health{nullptr};
  /** True if failingSensors is not empty. While it is false, a successful reading need not lock
   * gatheringMutex. */
  mutable std::atomic<bool> isAnyFailing{false};
  mutable boost::shared_mutex dataMutex;
  boost::mutex subscriptionMutex;
  /** The sensors whose records could not be gathered the last time. */
  mutable std::set<std::string> failingSensors;
  mutable std::mutex gatheringMutex;
  /** The last errors of sensors that were not built. */
  mutable std::map<std::string, ko::log::Record> troubleOfMissing;
  mutable std::mutex troubleMutex;
};

}  // namespace QV::sensor
