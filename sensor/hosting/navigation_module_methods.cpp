#include <map>
#include <set>
#include <string>

#include "platform/middleware/contracts/navigation_contract.h"
#include "sensor/hosting/navigation_module.h"
#include "sensor/hosting/record_value.h"
#include "sensor/perception/internal/people_perception_sensor.h"
#include "sensor/perception/internal/touch_sensor.h"

namespace QV::sensor {
namespace {

using Name = const std::string&;

QVValue toValue(const std::set<std::string>& names) {
  return QVValue::Array(names.begin(), names.end());
}

QVValue toValue(const std::map<std::string, std::set<std::string>>& families) {
  QVValue::Array result;
  for (const auto& [family, names] : families) {
    result.push_back(QVValue::array(family, toValue(names)));
  }
  return result;
}

std::set<std::string> toNames(const QVValue& value) {
  if (value.isString()) return {value.toString()};
  std::set<std::string> names;
  for (const QVValue& name : value.toArray()) names.insert(name.toString());
  return names;
}

}  // namespace

void NavigationModule::xBindEvents() {
  using namespace NavigationContract;
  bindMethod(kOnTouchChanged, [this](Name event, const QVValue& value, Name subscriber) {
    for (const auto& sensor : touchSensors) sensor->onTouchChanged(event, value, subscriber);
  });
  bindMethod(kOnPeopleDetected, [this](Name event, const QVValue& value, Name subscriber) {
    for (const auto& sensor : peopleSensors) sensor->onUpdatePeopleList(event, value, subscriber);
  });
}

void NavigationModule::xBindSubscriptions() {
  using namespace NavigationContract;
  bindMethod(kSubscribe, [this](Name subscriber, const QVValue& names) {
    return manager->subscribe(subscriber, toNames(names));
  });
  bindMethod(kUnsubscribe, [this](Name subscriber, const QVValue& names) {
    return manager->unsubscribe(subscriber, toNames(names));
  });
  bindMethod(kSubscribeToAll, [this](Name subscriber) { return manager->subscribe(subscriber); });
  bindMethod(kUnsubscribeFromAll,
             [this](Name subscriber) { return manager->unsubscribe(subscriber); });
}

void NavigationModule::xBindSwitches() {
  using namespace NavigationContract;
  SensorManager* const m = manager.get();
  bindMethod(kEnableSensorOrFamily, &SensorManager::enableSensorOrFamily, m);
  bindMethod(kSetSensorDiagnosis, &SensorManager::setSensorDiagnosis, m);
  bindMethod(kLookAgain, &SensorManager::lookAgain, m);
  bindMethod(kSetSensorsDebug, &SensorManager::setSensorsDebug, m);
  bindMethod(kSetPose2D, [m](const std::vector<float>& scan, const std::vector<float>& reference) {
    m->setPose2D(Math::Pose2D(scan), Math::Pose2D(reference));
  });
}

void NavigationModule::xBindLists() {
  using namespace NavigationContract;
  const SensorManager* const m = manager.get();
  bindMethod(kGetFamilyNames, [m] { return toValue(m->getFamilyNames()); });
  bindMethod(kGetSensorList, [m] { return toValue(m->getSensorList()); });
  bindMethod(kGetAllSensorsByFamily, [m] { return toValue(m->getAllSensorsByFamily()); });
  bindMethod(kGetSensorsByFamily, [m](Name f) { return toValue(m->getSensorsByFamily(f)); });
  bindMethod(kGetSensorListBySubscriber,
             [m](Name subscriber) { return toValue(m->getSensorListBySubscriber(subscriber)); });
  bindMethod(kGetSubscribers, [m] { return toValue(m->getSubscribers()); });
  bindMethod(kGetEnabledSensorList, [m] { return toValue(m->getEnabledSensorList()); });
}

void NavigationModule::xBindQuestions() {
  using namespace NavigationContract;
  const SensorManager* const m = manager.get();
  bindMethod(kIsSensorStarted, &SensorManager::isSensorStarted, m);
  bindMethod(kIsSensorEnabled, &SensorManager::isSensorEnabled, m);
  bindMethod(kIsSensorDiagnosisSuccess, &SensorManager::isSensorDiagnosisSuccess, m);
  bindMethod(kIsSensorSubscribedBy, &SensorManager::isSensorSubscribedBy, m);
  bindMethod(kIsSensor, &SensorManager::isSensor, m);
  bindMethod(kIsFamily, &SensorManager::isFamily, m);
  bindMethod(kGetKindParameter, &SensorManager::getKindParameter, m);
  bindMethod(kLastTrouble, &NavigationModule::xLastTrouble, this);
  bindMethod(kGetHealth, &NavigationModule::xGetHealth, this);
}

void NavigationModule::xBindReadings() {
  using namespace NavigationContract;
  bindMethod(kGetMetricalData, [this](const QVValue& names) {
    return toQVValue(manager->getMetricalData(toNames(names)));
  });
  bindMethod(kGetAllMetricalData, [this] { return toQVValue(manager->getMetricalData()); });
}

QVValue NavigationModule::xGetHealth(const std::string& sensorName) const {
  const auto health = manager->getHealth(sensorName);
  if (!health) return QVValue::Array();
  return QVValue::array(sensor::getName(health->state), health->reason, health->remedy,
                        health->since, health->times);
}

QVValue NavigationModule::xLastTrouble(const std::string& sensorName) const {
  const auto line = manager->getLastTrouble(sensorName);
  if (!line) return QVValue::Array();
  return QVValue::array(ko::log::getName(line->level), line->message, line->timestamp);
}

}  // namespace QV::sensor
