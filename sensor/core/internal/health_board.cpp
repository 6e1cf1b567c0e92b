#include "sensor/core/internal/health_board.h"

#include <algorithm>

#include "sensor/core/internal/sensor_watch.h"
#include "sensor/core/internal/watch_times.h"

namespace QV::sensor {
namespace {

using Time = ko::Clock::time_point;

// None of the limits that ask for a judge can be passed before.
void tellPatience(const HealthLimits& limits, SensorWatch& watch) {
  constexpr double kLongest = 1e6;
  const double least = std::min(limits.get(HealthLimit::age).value_or(kLongest),
                                limits.get(HealthLimit::silence).value_or(kLongest));
  watch.setPatience(static_cast<std::int64_t>(std::min(least, kLongest) * 1e9));
}

}  // namespace

void HealthBoard::describe(const Sensor& sensor, const HealthNature& nature, ko::Duration period) {
  HealthNature own = nature;
  SensorWatch& watch = sensor.xGetWatch();
  own.hasRate = nature.hasRate && watch.getNature().hasRate;
  watch.setNature(own);
  sensor.xWatch(isOn && isAsked);
  const Lock lock(mutex);
  Entry& entry = entries[sensor.getName()];
  entry.sensor = &sensor;
  entry.limits = HealthLimits(period);
  // A sensor that reports changes rarely has news, so two bad readings in 20 are too many.
  if (!own.hasRate) entry.limits.set(HealthLimit::garbage, 0.05);
  glances.clear();
  tellPatience(entry.limits, watch);
}

void HealthBoard::setLimit(const std::string& sensor, HealthLimit limit,
                           std::optional<double> value) {
  const Lock lock(mutex);
  xAddNew();
  const auto found = entries.find(sensor);
  if (found == entries.end()) return;
  found->second.limits.set(limit, value);
  glances.clear();
  tellPatience(found->second.limits, found->second.sensor->xGetWatch());
}

std::optional<double> HealthBoard::getLimit(const std::string& sensor, HealthLimit limit) {
  const Lock lock(mutex);
  xAddNew();
  const auto found = entries.find(sensor);
  return found == entries.end() ? std::nullopt : found->second.limits.get(limit);
}

void HealthBoard::setCallback(Callback newCallback) {
  if (newCallback) beAsked();
  const Lock lock(mutex);
  // The old callback is destroyed after the lock, because its destructor may ask for health.
  callback.swap(newCallback);
}

void HealthBoard::setOn(bool on) {
  const Lock lock(mutex);
  isOn = on;
  xWatchAll(on && isAsked);
  // Notes from before the pause are outdated.
  const Time now = ko::Clock::now();
  settledAt = now + kSettling;
  xNoteTick(now);
}

void HealthBoard::beAsked() {
  if (isAsked.exchange(true)) return;
  const Lock lock(mutex);
  xWatchAll(isOn);
}

void HealthBoard::xWatchAll(bool on) const {
  for (const auto& [name, sensor] : sensors) {
    if (sensor) sensor->xWatch(on);
  }
}

void HealthBoard::setRefreshed(bool on) {
  const Lock lock(mutex);
  isRefreshed = on;
  xNoteTick(ko::Clock::now());
}

void HealthBoard::noteDeviceTime(Time time) {
  const Time now = ko::Clock::now();
  deviceOffset = (time - now).count();
  deviceNotedAt = inNs(now);
}

void HealthBoard::noteVelocity(const Math::Pose2D& velocity) {
  motion.note(velocity, ko::Clock::now());
}

std::optional<SensorHealth> HealthBoard::get(const std::string& sensor) {
  beAsked();
  Lock lock(mutex);
  xJudgeAll(false);
  const auto found = entries.find(sensor);
  std::optional<SensorHealth> health;
  if (found != entries.end()) health = xTell(found->second);
  xCallBack(lock);
  return health;
}

std::map<std::string, SensorHealth> HealthBoard::getAll() {
  beAsked();
  Lock lock(mutex);
  xJudgeAll(false);
  std::map<std::string, SensorHealth> all;
  for (const auto& [name, entry] : entries) all.emplace(name, xTell(entry));
  xCallBack(lock);
  return all;
}

void HealthBoard::xAddNew() {
  if (entries.size() == sensors.size()) return;
  for (const auto& [name, sensor] : sensors) {
    if (!sensor) continue;
    Entry& entry = entries[name];
    entry.sensor = sensor.get();
    if (isAsked && !sensor->watch) sensor->xWatch(isOn);
    tellPatience(entry.limits, sensor->xGetWatch());
  }
}

}  // namespace QV::sensor
