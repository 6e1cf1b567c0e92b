#include <algorithm>
#include <exception>
#include <iterator>
#include <mutex>
#include <utility>

#include <boost/make_shared.hpp>
#include <boost/thread/lock_types.hpp>

#include "platform/ko/log.h"
#include "sensor/core/internal/copy_records.h"
#include "sensor/core/sensor_manager.h"

namespace QV::sensor {
namespace {

constexpr char kRecordsCategory[] = "Navigation.SensorManager";

using Records = std::vector<Math::MetricalData>;

void moveAppend(Records& from, Records& to) {
  to.insert(to.end(), std::make_move_iterator(from.begin()), std::make_move_iterator(from.end()));
}

void moveAppendMatching(Records& from, const std::string& name, Records& to) {
  for (Math::MetricalData& record : from) {
    if (record.familyName == name || record.sensorName == name) to.push_back(std::move(record));
  }
}

}  // namespace

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
    xNoteFailure(name, sensor, exception.what());
  } catch (...) {
    xNoteFailure(name, sensor, "not a standard exception");
  }
}

void SensorManager::xNoteFailure(const std::string& name, const Sensor& sensor,
                                 const char* reason) const {
  const std::string message = "Unable to gather the data of " + name + ": " + reason;
  // The log gets one line when a sensor begins to fail, not one per refresh.
  if (xChangesGathering(name, false)) {
    sensor.logTrouble(ko::log::Level::error, kRecordsCategory, "xUpdateData", message);
  } else {
    sensor.keepTrouble(ko::log::Level::error, kRecordsCategory, "xUpdateData", message);
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
  return copyRecords(*xShareCache());
}

boost::shared_ptr<const Records> SensorManager::xShareCache() const {
  boost::shared_lock<boost::shared_mutex> lock(dataMutex);
  return data;
}

}  // namespace QV::sensor
