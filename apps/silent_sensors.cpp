#include "apps/silent_sensors.h"

#include "apps/output/notes.h"
#include "apps/subscriber.h"
#include "platform/ko/log.h"

namespace QV::app {
namespace {

std::string whyOf(const session::SensorState& sensor) {
  if (!sensor.enabled) return "it is disabled";
  if (!sensor.trouble.empty()) return ko::log::onOneLine(sensor.trouble);
  if (isFault(sensor.health.state)) return ko::log::onOneLine(sensor.health.reason);
  return "no measurement yet";
}

}  // namespace

SilentSensors findSilent(const session::Snapshot& end, const std::set<std::string>& heard) {
  SilentSensors silent;
  for (const auto& sensor : session::sensorsByName(end)) {
    const bool isAsked = sensor.subscribers.contains(kSubscriber);
    const bool hasSpoken = heard.contains(sensor.name) || !sensor.records.empty();
    const bool hasReason = sensor.health.state == sensor::HealthState::sound;
    if (!isAsked || hasSpoken || hasReason) continue;
    silent.push_back({sensor.name, sensor.family, whyOf(sensor)});
  }
  return silent;
}

int reportSilent(const SilentSensors& sensors) {
  for (const auto& sensor : sensors) complain(sensor.name + " gave no record: " + sensor.why);
  return sensors.empty() ? 0 : kNotAll;
}

}  // namespace QV::app
