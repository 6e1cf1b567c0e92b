#include "sensor/hosting/navigation_module.h"

#include <set>
#include <utility>

#include <boost/make_shared.hpp>

#include "platform/middleware/qv_error.h"
#include "sensor/core/scoped_subscription.h"
#include "sensor/hosting/record_value.h"
#include "sensor/perception/people_perception_sensor.h"
#include "sensor/perception/touch_sensor.h"
#include "sensor/real/real_sensor_manager.h"

namespace QV::sensor {
namespace {

typedef const std::string& Name;

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

template <typename T>
std::vector<boost::shared_ptr<T>> sensorsOfType(const SensorManager& manager) {
  std::vector<boost::shared_ptr<T>> result;
  for (Name name : manager.getSensorList()) {
    if (auto sensor = boost::dynamic_pointer_cast<T>(manager.getSensorPtr(name))) {
      result.push_back(std::move(sensor));
    }
  }
  return result;
}

}  // namespace

NavigationModule::NavigationModule() : QVModule("QVNavigation") {}

NavigationModule::NavigationModule(const boost::shared_ptr<QVBroker>& broker)
    : NavigationModule(broker, SensorFactory::standard()) {}

NavigationModule::NavigationModule(const boost::shared_ptr<QVBroker>& broker,
                                   const SensorFactory& factory)
    : NavigationModule() {
  xHost(boost::make_shared<RealSensorManager>(broker, factory));
}

NavigationModule::NavigationModule(boost::shared_ptr<SensorManager> manager) : NavigationModule() {
  if (!manager) throw QVError("QVNavigation", "NavigationModule", "no manager given");
  xHost(std::move(manager));
}

NavigationModule::~NavigationModule() {
  if (!manager) return;
  for (Name subscriber : manager->getSubscribers()) {
    unsubscribeGuarded(*manager, subscriber, manager->getFamilyNames());
  }
}

void NavigationModule::xHost(boost::shared_ptr<SensorManager> newManager) {
  manager = std::move(newManager);
  touchSensors = sensorsOfType<TouchSensor>(*manager);
  peopleSensors = sensorsOfType<PeoplePerceptionSensor>(*manager);
  xBindEvents();
  xBindSubscriptions();
  xBindSwitches();
  xBindLists();
  xBindQuestions();
  xBindReadings();
}

void NavigationModule::xBindEvents() {
  bindMethod("_onTouchChanged", [this](Name event, const QVValue& value, Name subscriber) {
    for (const auto& sensor : touchSensors) sensor->onTouchChanged(event, value, subscriber);
  });
  bindMethod("_onPeopleDetected", [this](Name event, const QVValue& value, Name subscriber) {
    for (const auto& sensor : peopleSensors) sensor->onUpdatePeopleList(event, value, subscriber);
  });
}

void NavigationModule::xBindSubscriptions() {
  bindMethod("subscribe", [this](Name subscriber, const QVValue& names) {
    return manager->subscribe(subscriber, toNames(names));
  });
  bindMethod("unsubscribe", [this](Name subscriber, const QVValue& names) {
    return manager->unsubscribe(subscriber, toNames(names));
  });
  bindMethod("subscribeToAll", [this](Name subscriber) { return manager->subscribe(subscriber); });
  bindMethod("unsubscribeFromAll",
             [this](Name subscriber) { return manager->unsubscribe(subscriber); });
}

void NavigationModule::xBindSwitches() {
  SensorManager* const m = manager.get();
  bindMethod("enableSensorOrFamily", &SensorManager::enableSensorOrFamily, m);
  bindMethod("setSensorDiagnosis", &SensorManager::setSensorDiagnosis, m);
  bindMethod("lookAgain", &SensorManager::lookAgain, m);
  bindMethod("setSensorsDebug", &SensorManager::setSensorsDebug, m);
  bindMethod("setPose2D", [m](const std::vector<float>& scan, const std::vector<float>& reference) {
    m->setPose2D(Math::Pose2D(scan), Math::Pose2D(reference));
  });
}

void NavigationModule::xBindLists() {
  const SensorManager* const m = manager.get();
  bindMethod("getFamilyNames", [m] { return toValue(m->getFamilyNames()); });
  bindMethod("getSensorList", [m] { return toValue(m->getSensorList()); });
  bindMethod("getAllSensorsByFamily", [m] { return toValue(m->getAllSensorsByFamily()); });
  bindMethod("getSensorsByFamily", [m](Name f) { return toValue(m->getSensorsByFamily(f)); });
  bindMethod("getSensorListBySubscriber",
             [m](Name subscriber) { return toValue(m->getSensorListBySubscriber(subscriber)); });
  bindMethod("getSubscribers", [m] { return toValue(m->getSubscribers()); });
  bindMethod("getEnabledSensorList", [m] { return toValue(m->getEnabledSensorList()); });
}

void NavigationModule::xBindQuestions() {
  const SensorManager* const m = manager.get();
  bindMethod("isSensorStarted", &SensorManager::isSensorStarted, m);
  bindMethod("isSensorEnabled", &SensorManager::isSensorEnabled, m);
  bindMethod("isSensorDiagnosisSuccess", &SensorManager::isSensorDiagnosisSuccess, m);
  bindMethod("isSensorSubscribedBy", &SensorManager::isSensorSubscribedBy, m);
  bindMethod("isSensor", &SensorManager::isSensor, m);
  bindMethod("isFamily", &SensorManager::isFamily, m);
  bindMethod("getKindParameter", &SensorManager::getKindParameter, m);
  bindMethod("lastTrouble", &NavigationModule::xLastTrouble, this);
}

void NavigationModule::xBindReadings() {
  bindMethod("getMetricalData", [this](const QVValue& names) {
    return toQVValue(manager->getMetricalData(toNames(names)));
  });
  bindMethod("getAllMetricalData", [this] { return toQVValue(manager->getMetricalData()); });
}

QVValue NavigationModule::xLastTrouble(const std::string& sensorName) const {
  const auto line = trouble.get(sensorName);
  if (!line) return QVValue::Array();
  return QVValue::array(ko::log::getName(line->level), line->message, line->timestamp);
}

}  // namespace QV::sensor
