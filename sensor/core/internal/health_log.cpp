#include "sensor/core/internal/health_log.h"

#include <algorithm>

namespace QV::sensor {
namespace {

using Level = ko::log::Level;

constexpr boost::chrono::minutes kQuiet(1);

std::string warningOn(const std::string& sensor, const SensorHealth& health) {
  const std::string count =
      health.times > 1 ? " (" + std::to_string(health.times) + " times so far)" : "";
  return sensor + " is " + getName(health.state) + count + ": " + health.reason;
}

}  // namespace

std::optional<HealthLine> HealthLog::lineOn(const std::string& sensor, HealthState before,
                                            const HealthFinding& finding,
                                            const SensorHealth& health) {
  if (!isFault(finding.state)) {
    const bool isOver = warned.erase(sensor) > 0 && finding.state == HealthState::sound &&
                        finding.cause != HealthCause::unwatched;
    return isOver ? std::optional(HealthLine{Level::info, sensor + " is sound again"})
                  : std::nullopt;
  }
  if (finding.state < before || !xIsDue(xKeyOf(sensor, finding), health.since)) return {};
  warned.insert(sensor);
  return HealthLine{Level::warning, warningOn(sensor, health)};
}

HealthLog::Key HealthLog::xKeyOf(const std::string& sensor, const HealthFinding& finding) {
  switch (finding.cause) {
    case HealthCause::contradicts:
      return {std::min(sensor, *finding.other), finding.state};
    case HealthCause::unread:
    case HealthCause::neverRead:
      return {std::string(), HealthState::late};
    default:
      return {sensor, finding.state};
  }
}

bool HealthLog::xIsDue(const Key& key, ko::Clock::time_point now) {
  const auto [known, isNew] = warnedAt.try_emplace(key, now);
  if (!isNew && now >= known->second && now - known->second < kQuiet) return false;
  known->second = now;
  return true;
}

}  // namespace QV::sensor
