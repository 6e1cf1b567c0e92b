#include "ros2/recording/internal/health_statuses.h"

#include "session/internal/number_text.h"

namespace QV::ros2 {
namespace {

constexpr std::byte kOk{0};
constexpr std::byte kWarning{1};
constexpr std::byte kError{2};

std::byte levelOf(sensor::HealthState state) {
  if (!isFault(state)) return kOk;
  return state < sensor::HealthState::silent ? kWarning : kError;
}

diagnostic_msgs::DiagnosticStatus statusOf(const std::string& sensor, const std::string& family,
                                           const sensor::SensorHealth& health,
                                           ko::Clock::time_point now) {
  diagnostic_msgs::DiagnosticStatus status;
  status.level = levelOf(health.state);
  status.name = sensor;
  status.message = getName(health.state);
  if (!health.reason.empty()) status.message += ": " + health.reason;
  status.hardware_id = family;
  if (!health.remedy.empty()) status.values.push_back({"remedy", health.remedy});
  const boost::chrono::duration<double> lasted = now - health.since;
  status.values.push_back({"since", session::fixed(lasted.count(), 1) + " s ago"});
  status.values.push_back({"times", std::to_string(health.times)});
  return status;
}

}  // namespace

std::vector<diagnostic_msgs::DiagnosticStatus> statusesOf(const session::Snapshot& snapshot) {
  std::vector<diagnostic_msgs::DiagnosticStatus> statuses;
  statuses.reserve(snapshot.sensors.size() + snapshot.unbuilt.size());
  for (const auto& sensor : snapshot.sensors)
    statuses.push_back(statusOf(sensor.name, sensor.family, sensor.health, snapshot.time));
  for (const auto& [name, health] : snapshot.unbuilt)
    statuses.push_back(statusOf(name, "", health, snapshot.time));
  return statuses;
}

}  // namespace QV::ros2
