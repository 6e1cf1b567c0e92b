#include "apps/silent_sensors.h"

#include <algorithm>

#include "apps/output/notes.h"
#include "apps/subscriber.h"
#include "platform/ko/log.h"
#include "session/internal/description_gaps.h"
#include "session/internal/session_parts.h"

namespace QV::app {
namespace {

std::string whyOf(const session::SensorState& sensor) {
  if (!sensor.enabled) return "it is disabled";
  if (!sensor.trouble.empty()) return ko::log::onOneLine(sensor.trouble);
  if (isFault(sensor.health.state)) return ko::log::onOneLine(sensor.health.reason);
  return "no measurement yet";
}

SilentSensors findUnbuilt(session::Session& session, const std::vector<std::string>& asked) {
  SilentSensors unbuilt;
  for (const auto& [name, family] : session::findUnbuiltSensors(session::robotOf(session))) {
    if (!asked.empty() && std::ranges::find(asked, family) == asked.end()) continue;
    const auto trouble = session.getManager().getLastTrouble(name);
    const std::string why = trouble ? ": " + ko::log::onOneLine(trouble->message) : "";
    unbuilt.push_back({name, family, "it could not be built" + why});
  }
  return unbuilt;
}

}  // namespace

SilentSensors findSilent(session::Session& session, const std::vector<std::string>& asked,
                         const session::Snapshot& end, const std::set<std::string>& heard) {
  SilentSensors silent = findUnbuilt(session, asked);
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
