#include "sensor/core/sensor_manager.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <utility>

#include <boost/make_shared.hpp>
#include <boost/thread/lock_guard.hpp>
#include <boost/thread/lock_types.hpp>

#include "platform/ko/log.h"
#include "sensor/core/internal/health_board.h"

namespace QV::sensor {
namespace {

constexpr char kManagerCategory[] = "Navigation.SensorManager";

using Records = std::vector<Math::MetricalData>;

template <typename Map>
std::set<std::string> keysOf(const Map& map) {
  std::set<std::string> result;
  for (const auto& entry : map) result.insert(result.end(), entry.first);
  return result;
}

void moveAppend(Records& from, Records& to) {
  to.insert(to.end(), std::make_move_iterator(from.begin()), std::make_move_iterator(from.end()));
}

void moveAppendMatching(Records& from, const std::string& name, Records& to) {
  for (Math::MetricalData& record : from) {
    if (record.familyName == name || record.sensorName == name) to.push_back(std::move(record));
  }
}

}  // namespace

SensorManager::SensorManager()
    : data(boost::make_shared<const Records>()), health(std::make_unique<HealthBoard>(sensors)) {}

SensorManager::~SensorManager() = default;

void SensorManager::setPose2D(const Math::Pose2D&, const Math::Pose2D&) {
  ko::log::warning(kManagerCategory, "setPose2D") << "setPose2D not implemented.";
}

bool SensorManager::subscribe(const std::string& subscriber) {
  return subscribe(subscriber, keysOf(families));
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
  return unsubscribe(subscriber, keysOf(families));
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
  boost::lock_guard<boost::mutex> lock(subscriptionMutex);
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
  boost::lock_guard<boost::mutex> lock(subscriptionMutex);
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
  ko::log::error(kManagerCategory, "getSensorsByFamily") << "Wrong family asked " << family;
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
  ko::log::info(kManagerCategory, "getSensorPtr") << "Unable to find " << sensorName;
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

bool SensorManager::xIsAnySensorOn() const {
  return std::any_of(sensors.begin(), sensors.end(),
                     [](const auto& entry) { return entry.second && entry.second->isStarted(); });
}

Records SensorManager::getMetricalData() const {
  return xGetData();
}

Records SensorManager::getMetricalData(const std::string& name) const {
  return getMetricalData(std::set<std::string>{name});
}

Records SensorManager::getMetricalData(const std::set<std::string>& names) const {
  Records result;
  for (const std::string& name : names) {
    Records all = xGetData();
    moveAppendMatching(all, name, result);
  }
  return result;
}

Records SensorManager::getMetricalData(std::initializer_list<std::string> names) const {
  return getMetricalData(std::set<std::string>(names));
}

boost::shared_ptr<const Records> SensorManager::shareMetricalData() const {
  return xShareData();
}

boost::shared_ptr<const Records> SensorManager::xShareData() const {
  return boost::make_shared<const Records>(xGetData());
}

void SensorManager::xUpdateData() const {
  Records records;
  records.reserve(sensors.size());
  for (const auto& [name, sensor] : sensors) {
    if (sensor) xGather(name, *sensor, records);
  }
  xSetData(std::move(records));
}

void SensorManager::xGather(const std::string& name, const Sensor& sensor, Records& records) const {
  try {
    Records own = sensor.getData();
    moveAppend(own, records);
    if (isAnyFailing) xChangesGathering(name, true);
  } catch (const std::exception& exception) {
    const std::string message = "Unable to gather the data of " + name + ": " + exception.what();
    // One line when a sensor begins to fail, not one for each cycle that it goes on.
    if (xChangesGathering(name, false)) {
      sensor.logTrouble(ko::log::Level::error, kManagerCategory, "xUpdateData", message);
    } else {
      sensor.keepTrouble(ko::log::Level::error, kManagerCategory, "xUpdateData", message);
    }
  }
}

bool SensorManager::xChangesGathering(const std::string& sensorName, bool success) const {
  std::lock_guard<std::mutex> lock(gatheringMutex);
  const bool changes =
      success ? failingSensors.erase(sensorName) > 0 : failingSensors.insert(sensorName).second;
  isAnyFailing = !failingSensors.empty();
  return changes;
}

void SensorManager::xSetData(Records records) const {
  auto fresh = boost::make_shared<const Records>(std::move(records));
  boost::unique_lock<boost::shared_mutex> lock(dataMutex);
  data.swap(fresh);
  lock.unlock();
}

Records SensorManager::xCopyData() const {
  return *xShareCache();
}

boost::shared_ptr<const Records> SensorManager::xShareCache() const {
  boost::shared_lock<boost::shared_mutex> lock(dataMutex);
  return data;
}

}  // namespace QV::sensor
