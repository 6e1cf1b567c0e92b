#include "sensor/core/sensor_manager.h"

#include <algorithm>
#include <exception>

#include <boost/make_shared.hpp>

#include "platform/ko/internal/call_lock.h"
#include "platform/ko/log.h"
#include "sensor/core/internal/health_board.h"

namespace QV::sensor {
namespace {

constexpr char kManagerCategory[] = "Navigation.SensorManager";

}  // namespace

SensorManager::SensorManager()
    : data(boost::make_shared<const std::vector<Math::MetricalData>>()) {}

SensorManager::~SensorManager() {
  delete health.load();
}

void SensorManager::setPose2D(const Math::Pose2D&, const Math::Pose2D&) {
  ko::log::warning(kManagerCategory, "setPose2D") << "setPose2D not implemented.";
}

bool SensorManager::subscribe(const std::string& subscriber) {
  return subscribe(subscriber, getFamilyNames());
}

bool SensorManager::subscribe(const std::string& subscriber, const std::string& name) {
  return subscribe(subscriber, std::set<std::string>{name});
}

bool SensorManager::subscribe(const std::string& subscriber, const std::set<std::string>& names) {
  return xForEachName(subscriber, names, "subscribe", "subscription",
                      &SensorManager::xSubscribeToFamily, &SensorManager::xSubscribeToSensor);
}

bool SensorManager::subscribe(const std::string& subscriber,
                              std::initializer_list<std::string> names) {
  return subscribe(subscriber, std::set<std::string>(names));
}

bool SensorManager::unsubscribe(const std::string& subscriber) {
  return unsubscribe(subscriber, getFamilyNames());
}

bool SensorManager::unsubscribe(const std::string& subscriber, const std::string& name) {
  return unsubscribe(subscriber, std::set<std::string>{name});
}

bool SensorManager::unsubscribe(const std::string& subscriber, const std::set<std::string>& names) {
  return xForEachName(subscriber, names, "unsubscribe", "unsubscription",
                      &SensorManager::xUnsubscribeFromFamily,
                      &SensorManager::xUnsubscribeFromSensor);
}

bool SensorManager::unsubscribe(const std::string& subscriber,
                                std::initializer_list<std::string> names) {
  return unsubscribe(subscriber, std::set<std::string>(names));
}

bool SensorManager::xForEachName(const std::string& subscriber, const std::set<std::string>& names,
                                 const char* method, const char* what, NameOperation onFamily,
                                 NameOperation onSensor) {
  ko::detail::CallLock lock(subscriptionMutex, method, subscriber);
  bool result = false;
  for (const std::string& name : names) {
    if (xIsFamily(name)) {
      if ((this->*onFamily)(subscriber, name)) result = true;
    } else if (xIsSensor(name)) {
      if ((this->*onSensor)(subscriber, name)) result = true;
    } else {
      ko::log::warning(kManagerCategory, method)
          << "Invalid " << what << " name \"" << name << "\" from \"" << subscriber << "\"";
      result = false;
    }
  }
  xOnSensorOnChanged(xIsAnySensorOn());
  return result;
}

bool SensorManager::xForEachMember(const std::string& subscriber, const std::string& family,
                                   const char* method, NameOperation onSensor) {
  const auto found = families.find(family);
  if (found == families.end()) {
    ko::log::error(kManagerCategory, method) << "Cannot find family \"" << family << "\"";
    return false;
  }
  bool result = false;
  for (const std::string& member : found->second) {
    if ((this->*onSensor)(subscriber, member)) result = true;
  }
  return result;
}

bool SensorManager::xSubscribeToFamily(const std::string& subscriber, const std::string& family) {
  return xForEachMember(subscriber, family, "xSubscribeToFamily",
                        &SensorManager::xSubscribeToSensor);
}

bool SensorManager::xUnsubscribeFromFamily(const std::string& subscriber,
                                           const std::string& family) {
  return xForEachMember(subscriber, family, "xUnsubscribeFromFamily",
                        &SensorManager::xUnsubscribeFromSensor);
}

bool SensorManager::xSubscribeToSensor(const std::string& subscriber,
                                       const std::string& sensorName) {
  Sensor* sensor = xFindSensor(sensorName);
  if (sensor) return sensor->subscribe(subscriber);
  ko::log::error(kManagerCategory, "xSubscribeToSensor")
      << "Cannot find sensor \"" << sensorName << "\"";
  return false;
}

bool SensorManager::xUnsubscribeFromSensor(const std::string& subscriber,
                                           const std::string& sensorName) {
  Sensor* sensor = xFindSensor(sensorName);
  if (sensor) return sensor->unsubscribe(subscriber);
  ko::log::error(kManagerCategory, "xUnsubscribeFromSensor")
      << "Cannot find sensor \"" << sensorName << "\"";
  return false;
}

void SensorManager::lookAgain() {
  static const std::string nobody;
  ko::detail::CallLock lock(subscriptionMutex, "SensorManager::lookAgain", nobody);
  xOnSensorOnChanged(xIsAnySensorOn());
}

bool SensorManager::enableSensorOrFamily(const std::string& name, bool enable) {
  const auto family = families.find(name);
  if (family != families.end()) {
    bool result = true;
    for (const std::string& member : family->second) {
      if (!xEnableSensor(member, enable)) result = false;
    }
    return result;
  }
  if (xEnableSensor(name, enable)) return true;
  ko::log::warning(kManagerCategory, "enableSensorOrFamily")
      << "Invalid name in enableSensorOrFamily: \"" << name << "\"";
  return false;
}

bool SensorManager::xEnableSensor(const std::string& sensorName, bool enable) {
  Sensor* sensor = xFindSensor(sensorName);
  if (!sensor) return false;
  sensor->enable(enable);
  return true;
}

bool SensorManager::setSensorDiagnosis(const std::string& sensorName, bool success) {
  Sensor* sensor = xFindSensor(sensorName);
  if (!sensor) return false;
  sensor->setDiagnosis(success);
  return true;
}

bool SensorManager::xIsAnySensorOn() const {
  return std::any_of(sensors.begin(), sensors.end(),
                     [](const auto& entry) { return entry.second && entry.second->isStarted(); });
}

}  // namespace QV::sensor
