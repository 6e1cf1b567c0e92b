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

/**
 * Owns a robot's sensors, by name and by family, and is all that navigation code talks to. A caller
 * subscribes under a name of its own to sensors or families, and reads the records of every sensor
 * that runs. Where a family and a sensor share a name, the family is meant. Bad names are logged
 * and answered with false or nothing; what a sensor's hardware throws passes through the operations
 * that start and stop it. Not copyable. Any thread may call any operation.
 */
class QV_API SensorManager {
 public:
  SensorManager();
  virtual ~SensorManager();
  SensorManager(const SensorManager&) = delete;
  SensorManager& operator=(const SensorManager&) = delete;

  /** The derived manager's debug switch. */
  virtual void setSensorsDebug(bool debug) = 0;
  /**
   * Simulated managers only: `scanPose` is where rays are cast from (map frame), `referencePose`
   * where records say the robot is. Others log a warning.
   */
  virtual void setPose2D(const Math::Pose2D& scanPose, const Math::Pose2D& referencePose);

 protected:
  /** The records of all started sensors. */
  virtual std::vector<Math::MetricalData> xGetData() const = 0;
  /** The same to share: of a manager that keeps its records, those, with xShareCache. */
  virtual boost::shared_ptr<const std::vector<Math::MetricalData>> xShareData() const;
  /** Told after every subscription change, and by lookAgain, whether any sensor is started. */
  virtual void xOnSensorOnChanged(bool anySensorOn) = 0;

 public:
  /**
   * Subscribes to every family, to one name, or to a set of names; true if that was new to a
   * sensor. Names are taken in order, and one that is unknown sets the answer back to false for
   * those before it. Starting hardware that is wanted for the first time may take as long as the
   * hardware does.
   */
  bool subscribe(const std::string& subscriber);
  bool subscribe(const std::string& subscriber, const std::string& name);
  bool subscribe(const std::string& subscriber, const std::set<std::string>& names);
  bool subscribe(const std::string& subscriber, std::initializer_list<std::string> names);

  /** The mirrors of subscribe; true if a sensor lost this subscriber. */
  bool unsubscribe(const std::string& subscriber);
  bool unsubscribe(const std::string& subscriber, const std::string& name);
  bool unsubscribe(const std::string& subscriber, const std::set<std::string>& names);
  bool unsubscribe(const std::string& subscriber, std::initializer_list<std::string> names);

  /**
   * Looks whether any sensor runs and tells the derived manager, as a subscription does: after
   * enabling or a diagnosis, which don't.
   */
  void lookAgain();

  /** Takes neither the subscription lock nor tells the derived manager; false for a bad name. */
  bool enableSensorOrFamily(const std::string& name, bool enable);
  /** False if there is no such sensor. */
  bool setSensorDiagnosis(const std::string& sensorName, bool success);

  std::set<std::string> getFamilyNames() const;
  std::set<std::string> getSensorList() const;
  std::map<std::string, std::set<std::string>> getAllSensorsByFamily() const;
  std::set<std::string> getSensorsByFamily(const std::string& family) const;
  std::set<std::string> getSensorListBySubscriber(const std::string& subscriber) const;
  std::set<std::string> getSubscribers() const;
  /** Enabled and with a good diagnosis, started or not. */
  std::set<std::string> getEnabledSensorList() const;

  /** False for an unknown sensor. */
  bool isSensorStarted(const std::string& sensorName) const;
  bool isSensorEnabled(const std::string& sensorName) const;
  bool isSensorDiagnosisSuccess(const std::string& sensorName) const;
  bool isSensorSubscribedBy(const std::string& sensorName, const std::string& subscriber) const;

  bool isSensor(const std::string& name) const { return xIsSensor(name); }
  bool isFamily(const std::string& name) const { return xIsFamily(name); }
  /** Empty for an unknown sensor. */
  boost::shared_ptr<Sensor> getSensorPtr(const std::string& sensorName) const;

  /**
   * Copies of the records of all started sensors, in order of their names; or for each name, in
   * order, those of that family or sensor (twice, if a family and its sensor are both named).
   */
  std::vector<Math::MetricalData> getMetricalData() const;
  std::vector<Math::MetricalData> getMetricalData(const std::string& name) const;
  std::vector<Math::MetricalData> getMetricalData(const std::set<std::string>& names) const;
  std::vector<Math::MetricalData> getMetricalData(std::initializer_list<std::string> names) const;
  /** The records of all started sensors as above, without a copy where they are kept anyway. */
  boost::shared_ptr<const std::vector<Math::MetricalData>> shareMetricalData() const;

  /**
   * Why a sensor fails, as Sensor::getLastTrouble has it; for one that could not be built, under
   * its name in the robot's description. Nothing for one that nobody knows.
   */
  std::optional<ko::log::Record> getLastTrouble(const std::string& sensorName) const;

  /** Logs an error about a sensor and keeps it as its last trouble, whether or not it was built. */
  void logTrouble(const std::string& sensorName, std::string_view category, std::string_view method,
                  const std::string& message) const;

  /**
   * How a sensor is and why, by what its records and its hardware show: judged as of now, without
   * a wait for hardware. Records stay as they are. One that could not be built is failing; nothing,
   * and a warning, for one that nobody knows.
   */
  std::optional<SensorHealth> getHealth(const std::string& sensorName) const;
  /** Of all sensors, by name. */
  std::map<std::string, SensorHealth> getHealth() const;
  using HealthCallback = boost::function<void(const std::string& sensor, const SensorHealth&)>;
  /**
   * From now on called on each change of a sensor's state, one change at a time and in order, by
   * the thread that found it: the task that judges, one that reads simulated sensors, or one that
   * asks. An empty one ends it.
   */
  void onHealthChanged(HealthCallback callback);
  /** Off: readings are not looked at, and what runs counts as sound. On at first. */
  void watchHealth(bool on);
  /**
   * Changes a limit of a sensor, of a family or, without a name, of all; none switches it off.
   * False, and a warning, for a bad name.
   */
  bool setHealthLimit(const HealthRule& rule);
  /** Nothing where it is switched off, and for an unknown sensor. */
  std::optional<double> getHealthLimit(const std::string& sensorName, HealthLimit limit) const;

  /** A parameter of the robot's kind for callers, without unit; 0 unless the derived manager sets
   * it. */
  float getKindParameter() const { return kindParameter; }

 protected:
  bool xSubscribeToFamily(const std::string& subscriber, const std::string& family);
  bool xSubscribeToSensor(const std::string& subscriber, const std::string& sensorName);
  bool xUnsubscribeFromFamily(const std::string& subscriber, const std::string& family);
  bool xUnsubscribeFromSensor(const std::string& subscriber, const std::string& sensorName);
  bool xEnableSensor(const std::string& sensorName, bool enable);

  /**
   * Gathers the records of all sensors, in order of their names, into the cache. A sensor that
   * throws a standard exception is logged when it begins to, and left out.
   */
  void xUpdateData() const;
  /** Replaces the cache. */
  void xSetData(std::vector<Math::MetricalData> records) const;
  /** A copy of the cache. */
  std::vector<Math::MetricalData> xCopyData() const;
  /** The cache itself: records that nobody changes any more. */
  boost::shared_ptr<const std::vector<Math::MetricalData>> xShareCache() const;

  HealthBoard& xHealth() const { return *health; }

  bool xIsSensor(const std::string& name) const { return sensors.count(name) > 0; }
  bool xIsFamily(const std::string& name) const { return families.count(name) > 0; }
  bool xIsAnySensorOn() const;

  /** Filled by the derived manager's constructor and never changed afterwards. */
  std::map<std::string, std::set<std::string>> families;
  std::map<std::string, boost::shared_ptr<Sensor>> sensors;
  float kindParameter = 0.0f;

 private:
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
  /** Notes how gathering a sensor's records went; true if it went otherwise the last time. */
  bool xChangesGathering(const std::string& sensorName, bool success) const;

  /** The cache: records that nobody changes any more, so that the lock is held for a pointer only.
   */
  mutable boost::shared_ptr<const std::vector<Math::MetricalData>> data;
  mutable boost::shared_mutex dataMutex;
  boost::mutex subscriptionMutex;
  /** Whose records could not be gathered the last time. */
  mutable std::set<std::string> failingSensors;
  /** Spares the lock while none fails. */
  mutable std::atomic<bool> isAnyFailing{false};
  mutable std::mutex gatheringMutex;
  /** Of sensors that were not built. */
  mutable std::map<std::string, ko::log::Record> troubleOfMissing;
  mutable std::mutex troubleMutex;
  const std::unique_ptr<HealthBoard> health;
};

}  // namespace QV::sensor
