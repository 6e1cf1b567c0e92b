#include "apps/silent_sensors.h"

#include <iostream>

#include "apps/subscriber.h"
#include "platform/ko/log.h"

namespace QV::app {
namespace {

bool maySayNothing(const session::SensorState& sensor, const Model::SensorKinds& kinds) {
  const Model::SensorKind* const kind = kinds.findFamily(sensor.family);
  return kind && kind->silence == Model::Silence::always && !isFault(sensor.health.state);
}

std::string whyOf(const session::SensorState& sensor) {
  if (!sensor.enabled) return "it is disabled";
  if (!sensor.trouble.empty()) return ko::log::onOneLine(sensor.trouble);
  if (isFault(sensor.health.state)) return ko::log::onOneLine(sensor.health.reason);
  return "nothing was measured so far";
}

}  // namespace

SilentSensors findSilent(const session::Snapshot& end, const Model::SensorKinds& kinds,
                         const std::set<std::string>& heard) {
  SilentSensors silent;
  for (const auto& sensor : session::sensorsByName(end)) {
    const bool isAsked = sensor.subscribers.contains(kSubscriber);
    const bool hasSpoken = heard.contains(sensor.name) || !sensor.records.empty();
    if (!isAsked || hasSpoken || maySayNothing(sensor, kinds)) continue;
    silent.push_back({sensor.name, sensor.family, whyOf(sensor)});
  }
  return silent;
}

int reportSilent(const SilentSensors& sensors) {
  for (const auto& sensor : sensors)
    std::cerr << "qvsensors: " << sensor.name << " gave no record: " << sensor.why << '\n';
  return sensors.empty() ? 0 : kNotAll;
}

}  // namespace QV::app
