#include "session/internal/sensor_look.h"

#include <algorithm>

#include "session/internal/place_marks.h"
#include "session/internal/record_owner.h"
#include "session/internal/seconds.h"

namespace QV::session {
namespace {

// Managers refresh at this period.
constexpr ko::Duration kRefreshPeriod{100'000'000};
constexpr ko::Duration kRateWindow{2'000'000'000};
constexpr ko::Duration kHistory{1'000'000'000};

}  // namespace

void SensorLook::look(Snapshot& snapshot) {
  auto& manager = robot.getManager();
  std::vector<SensorState>& sensors = snapshot.sensors;
  std::map<std::string, std::size_t> byName;
  for (const auto& [family, names] : manager.getAllSensorsByFamily()) {
    for (const std::string& name : names) {
      byName[name] = sensors.size();
      sensors.push_back({name, family});
      xLookAtSwitches(sensors.back());
    }
  }
  Records records = robot.getRecords();
  if (xIsNoteDue()) xNote(records);
  for (auto& record : records) {
    const auto found = byName.find(sensorOf(record, manager));
    if (found == byName.end()) continue;
    xLookAtRecord(record, sensors[found->second]);
    sensors[found->second].records.push_back(std::move(record));
  }
  for (SensorState& sensor : sensors) {
    sensor.nearest = sensor.marks.nearest;
    sensor.rate = xMeasureRate(sensor.name);
  }
  xLookAtHealth(snapshot);
}

// The manager knows the health of sensors, too, that it could not build.
void SensorLook::xLookAtHealth(Snapshot& snapshot) const {
  snapshot.unbuilt = robot.getManager().getHealth();
  for (SensorState& sensor : snapshot.sensors) {
    const auto known = snapshot.unbuilt.extract(sensor.name);
    if (known) sensor.health = known.mapped();
  }
}

void SensorLook::xLookAtSwitches(SensorState& sensor) {
  const auto& manager = robot.getManager();
  sensor.started = manager.isSensorStarted(sensor.name);
  sensor.enabled = manager.isSensorEnabled(sensor.name);
  sensor.diagnosis = manager.isSensorDiagnosisSuccess(sensor.name);
  sensor.points = findMeaning(robot, sensor.name);
  // A sensor that is being started would keep us waiting.
  auto& known = subscribers[sensor.name];
  if (!switches.isBusy()) known = manager.getSensorPtr(sensor.name)->getSubscribers();
  sensor.subscribers = known;
  const auto trouble = manager.getLastTrouble(sensor.name);
  if (!trouble || trouble->level > ko::log::Level::warning) return;
  sensor.trouble = trouble->message;
  sensor.troubleAge = inSeconds(ko::Clock::now() - trouble->timestamp);
}

void SensorLook::xLookAtRecord(const Math::MetricalData& record, SensorState& sensor) const {
  const double age = inSeconds(Math::age(record, ko::Clock::now()));
  sensor.age = std::max(age, sensor.age.value_or(age));
  const Math::Pose2D pose = xPoseAt(record.timestamp);
  addMarks(sensor.marks, placeMarks(record, sensor.points, pose, robot.getFrame()));
  if (record.fieldOfView.maxRange > 0.0f && record.fieldOfView.angularRange > 0.0f) {
    sensor.view = SensorState::View{findOrigin(record, pose, robot.getFrame()), record.fieldOfView};
  }
}

void SensorLook::noteMeasurements() {
  if (xIsNoteDue()) xNote(robot.getRecords());
}

void SensorLook::xNote(const Records& records) {
  const auto now = ko::Clock::now();
  noteNext = now + kRefreshPeriod - now.time_since_epoch() % kRefreshPeriod;
  for (const auto& record : records) {
    auto& times = measured[sensorOf(record, robot.getManager())];
    if (times.empty() || times.back() < record.timestamp) times.push_back(record.timestamp);
  }
}

double SensorLook::xMeasureRate(const std::string& name) {
  auto& times = measured[name];
  const auto now = ko::Clock::now();
  while (!times.empty() && now - times.front() > kRateWindow) times.pop_front();
  if (times.size() < 2) return 0.0;
  return static_cast<double>(times.size() - 1) / inSeconds(times.back() - times.front());
}

void SensorLook::notePose() {
  const auto now = ko::Clock::now();
  if (!poses.empty() && poses.back().time == now) poses.pop_back();
  poses.push_back({now, robot.getPose()});
  while (now - poses.front().time > kHistory) poses.pop_front();
}

Math::Pose2D SensorLook::xPoseAt(ko::Clock::time_point time) const {
  const auto next = std::find_if(poses.begin(), poses.end(),
                                 [time](const Placed& placed) { return placed.time >= time; });
  return next == poses.end() ? robot.getPose() : next->pose;
}

}  // namespace QV::session
