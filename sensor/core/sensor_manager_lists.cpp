#include <mutex>

#include "platform/ko/log.h"
#include "sensor/core/sensor_manager.h"

namespace QV::sensor {
namespace {

constexpr char kListsCategory[] = "Navigation.SensorManager";

template <typename Map>
std::set<std::string> keysOf(const Map& map) {
  std::set<std::string> result;
  for (const auto& entry : map) result.insert(result.end(), entry.first);
  return result;
}

}  // namespace

std::set<std::string> SensorManager::getFamilyNames() const {
  return keysOf(families);
}

std::set<std::string> SensorManager::getSensorList() const {
  return keysOf(sensors);
}

std::map<std::string, std::set<std::string>> SensorManager::getAllSensorsByFamily() const {
  return families;
}

std::set<std::string> SensorManager::getSensorsByFamily(const std::string& family) const {
  const auto found = families.find(family);
  if (found != families.end()) return found->second;
  ko::log::error(kListsCategory, "getSensorsByFamily") << "Wrong family asked " << family;
  return {};
}

template <typename Predicate>
std::set<std::string> SensorManager::xNamesOfSensors(Predicate predicate) const {
  std::set<std::string> result;
  for (const auto& [name, sensor] : sensors) {
    if (sensor && predicate(*sensor)) result.insert(result.end(), name);
  }
  return result;
}

std::set<std::string> SensorManager::getSensorListBySubscriber(
    const std::string& subscriber) const {
  return xNamesOfSensors([&](const Sensor& s) { return s.getSubscribers().count(subscriber) > 0; });
}

std::set<std::string> SensorManager::getSubscribers() const {
  std::set<std::string> result;
  for (const auto& [name, sensor] : sensors) {
    if (sensor) result.merge(sensor->getSubscribers());
  }
  return result;
}

std::set<std::string> SensorManager::getEnabledSensorList() const {
  return xNamesOfSensors([](const Sensor& s) { return s.isEnabled() && s.isDiagnosisSucess(); });
}

bool SensorManager::isSensorStarted(const std::string& sensorName) const {
  const Sensor* sensor = xFindSensor(sensorName);
  return sensor && sensor->isStarted();
}

bool SensorManager::isSensorEnabled(const std::string& sensorName) const {
  const Sensor* sensor = xFindSensor(sensorName);
  return sensor && sensor->isEnabled();
}

bool SensorManager::isSensorDiagnosisSuccess(const std::string& sensorName) const {
  const Sensor* sensor = xFindSensor(sensorName);
  return sensor && sensor->isDiagnosisSucess();
}

bool SensorManager::isSensorSubscribedBy(const std::string& sensorName,
                                         const std::string& subscriber) const {
  const Sensor* sensor = xFindSensor(sensorName);
  return sensor && sensor->getSubscribers().count(subscriber) > 0;
}

boost::shared_ptr<Sensor> SensorManager::getSensorPtr(const std::string& sensorName) const {
  const auto found = sensors.find(sensorName);
  if (found != sensors.end()) return found->second;
  ko::log::info(kListsCategory, "getSensorPtr") << "Unable to find " << sensorName;
  return {};
}

Sensor* SensorManager::xFindSensor(const std::string& sensorName) const {
  const auto found = sensors.find(sensorName);
  return found == sensors.end() ? nullptr : found->second.get();
}

std::optional<ko::log::Record> SensorManager::getLastTrouble(const std::string& sensorName) const {
  const Sensor* sensor = xFindSensor(sensorName);
  if (sensor) {
    if (auto trouble = sensor->getLastTrouble()) return trouble;
  }
  std::lock_guard<std::mutex> lock(troubleMutex);
  const auto found = troubleOfMissing.find(sensorName);
  if (found == troubleOfMissing.end()) return std::nullopt;
  return found->second;
}

void SensorManager::logTrouble(const std::string& sensorName, std::string_view category,
                               std::string_view method, const std::string& message) const {
  using ko::log::Level;
  const Sensor* sensor = xFindSensor(sensorName);
  if (sensor) return sensor->logTrouble(Level::error, category, method, message);
  {
    std::lock_guard<std::mutex> lock(troubleMutex);
    troubleOfMissing[sensorName] = {Level::error, std::string(category), std::string(method),
                                    message, ko::Clock::now()};
  }
  ko::log::write(Level::error, category, method, message);
}

}  // namespace QV::sensor
