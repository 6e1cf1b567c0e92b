#pragma once

#include <optional>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "platform/api.h"
#include "platform/middleware/qv_broker.h"
#include "platform/middleware/qv_module.h"
#include "sensor/core/sensor_manager.h"

namespace QV::sensor {

class PeoplePerceptionSensor;
class SensorFactory;
class TouchSensor;

/**
 * Hosts the library in a robot's middleware, as the module "QVNavigation". It owns a manager,
 * passes events on to its sensors, and offers its operations by name to other modules. To add
 * methods, derive from it, bind them, and register your module under the same name.
 *
 * Its methods have the names of the manager's operations. Names are given as a string or an array
 * of strings; a set comes as an array of strings in order.
 *
 * | methods | arguments | result |
 * |---|---|---|
 * | subscribe, unsubscribe | subscriber, names | bool |
 * | subscribeToAll, unsubscribeFromAll | subscriber | bool |
 * | getMetricalData, getAllMetricalData | names; none | array of records, see record_value.h |
 * | enableSensorOrFamily, setSensorDiagnosis | name, bool | bool |
 * | lookAgain; setSensorsDebug | none; bool | |
 * | setPose2D | twice an array x, y (m), theta (rad) | |
 * | getFamilyNames, getSensorList, getEnabledSensorList, getSubscribers | | set |
 * | getSensorsByFamily, getSensorListBySubscriber | family; subscriber | set |
 * | getAllSensorsByFamily | | array of arrays: family, set of its sensors |
 * | isSensorStarted, isSensorEnabled, isSensorDiagnosisSuccess, isSensor, isFamily | name | bool |
 * | isSensorSubscribedBy | sensor, subscriber | bool |
 * | getKindParameter | | float |
 * | lastTrouble | sensor | array: level, message, time (int, ns of ko::Clock); or empty |
 * | getHealth | sensor | array: state, reason, remedy, since (int, ns), times (int); or empty |
 * It also takes the events "_onTouchChanged" and "_onPeopleDetected", each with event, value and
 * subscriber; they are ignored if there is no such sensor.
 *
 * - Threads: thread-safe; the caller's thread does the work. Not copyable.
 * - Errors: QVError for wrong arguments; unknown names are answered as SensorManager does.
 *
 *     const auto module = boost::make_shared<QV::sensor::NavigationModule>(robot.getBroker());
 *     const QV::ScopedModule hosted(robot.getBroker(), module);
 *     const QV::QVProxy navigation(robot.getBroker(), "QVNavigation");
 *     navigation.callVoid("subscribe", "my module", "Sonar");
 */
class QV_API NavigationModule : public QVModule {
 public:
  /** Hosts the sensors of the robot behind the broker. Throws QVError for a null broker. Sensors
   * and broker keep each other alive: see ScopedModule. */
  explicit NavigationModule(const boost::shared_ptr<QVBroker>& broker);
  /** Hosts the sensors with the kinds and creators of `factory`. */
  NavigationModule(const boost::shared_ptr<QVBroker>& broker, const SensorFactory& factory);
  /** Hosts any manager that has all its sensors already. Throws QVError for a null manager. */
  explicit NavigationModule(boost::shared_ptr<SensorManager> manager);
  /** Unsubscribes everybody: all hardware stops, but a laser that confirmed its start too late. */
  ~NavigationModule() override;

  SensorManager& getManager() { return *manager; }

  /** The manager's last errors, by the sensor's name. */
  class LastTrouble {
   public:
    std::optional<ko::log::Record> get(const std::string& sensorName) const {
      return module.manager->getLastTrouble(sensorName);
    }

   private:
    friend class NavigationModule;
    explicit LastTrouble(const NavigationModule& module) : module(module) {}

    const NavigationModule& module;
  };
  LastTrouble getLastTrouble() const { return LastTrouble(*this); }

 private:
  NavigationModule();
  void xHost(boost::shared_ptr<SensorManager> newManager);

  void xBindEvents();
  void xBindSubscriptions();
  void xBindSwitches();
  void xBindLists();
  void xBindQuestions();
  void xBindReadings();
  QVValue xLastTrouble(const std::string& sensorName) const;
  QVValue xGetHealth(const std::string& sensorName) const;

  boost::shared_ptr<SensorManager> manager;
  std::vector<boost::shared_ptr<TouchSensor>> touchSensors;
  std::vector<boost::shared_ptr<PeoplePerceptionSensor>> peopleSensors;
};

}  // namespace QV::sensor
