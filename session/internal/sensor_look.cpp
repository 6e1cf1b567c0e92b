#include "session/internal/sensor_look.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <utility>

#include "session/internal/nearest_obstacle.h"
#include "session/internal/placed_record.h"
#include "session/internal/record_owner.h"
#include "session/internal/seconds.h"

namespace QV::session {
namespace {

// Managers refresh their records as often, not oftener.
constexpr ko::Duration kRefreshPeriod{100'000'000};
constexpr ko::Duration kRateWindow{2'000'000'000};
constexpr ko::Duration kHistory{1'000'000'000};
constexpr std::size_t kMostSampled = 8 * SensorLook::kMostPoints;
// Metres: points of a dense cloud that are nearer to each other look like one.
constexpr float kCell = 0.05f;
constexpr int kArcPoints = 15;

std::vector<Math::Position2D> arcOf(const PlacedRecord& record) {
  std::vector<Math::Position2D> arc;
  for (int i = 0; i < kArcPoints; ++i) {
    const float share = static_cast<float>(i) / (kArcPoints - 1) - 0.5f;
    arc.push_back(record.origin * Math::Position2D::fromPolarCoordinates(
                                      *record.echo, share * record.fieldOfView.angularRange));
  }
  return arc;
}

// One point for each cell, and so few that every page can draw them.
std::vector<Math::Position2D> thinned(const std::vector<Math::Position2D>& points) {
  if (points.size() <= SensorLook::kMostPoints) return points;
  const std::size_t step = points.size() / kMostSampled + 1;
  std::set<std::pair<int, int>> taken;
  std::vector<Math::Position2D> kept;
  for (std::size_t i = 0; i < points.size() && kept.size() < SensorLook::kMostPoints; i += step) {
    const auto& point = points[i];
    const std::pair cell(static_cast<int>(std::lround(point.x / kCell)),
                         static_cast<int>(std::lround(point.y / kCell)));
    if (taken.insert(cell).second) kept.push_back(point);
  }
  return kept;
}

}  // namespace

std::vector<SensorState> SensorLook::look() {
  auto& manager = robot.getManager();
  std::vector<SensorState> sensors;
  std::map<std::string, std::size_t> byName;
  for (const auto& [family, names] : manager.getAllSensorsByFamily()) {
    for (const std::string& name : names) {
      byName[name] = sensors.size();
      sensors.push_back({name, family});
      xLookAtSwitches(sensors.back());
    }
  }
  for (auto& record : manager.getMetricalData()) {
    const auto found = byName.find(sensorOf(record, manager));
    if (found == byName.end()) continue;
    xLookAtRecord(record, sensors[found->second]);
    sensors[found->second].records.push_back(std::move(record));
  }
  for (SensorState& sensor : sensors) {
    std::erase_if(sensor.points, [](const auto& point) {
      return !std::isfinite(point.x) || !std::isfinite(point.y);
    });
    sensor.points = thinned(sensor.points);
    sensor.rate = xMeasureRate(sensor.name);
  }
  return sensors;
}

void SensorLook::xLookAtSwitches(SensorState& sensor) const {
  const auto& manager = robot.getManager();
  sensor.started = manager.isSensorStarted(sensor.name);
  sensor.enabled = manager.isSensorEnabled(sensor.name);
  sensor.diagnosis = manager.isSensorDiagnosisSuccess(sensor.name);
  sensor.subscribers = manager.getSensorPtr(sensor.name)->getSubscribers();
  const auto trouble = robot.getNavigation().getLastTrouble().get(sensor.name);
  if (trouble) sensor.trouble = trouble->message;
}

void SensorLook::xLookAtRecord(const Math::MetricalData& record, SensorState& sensor) const {
  const double age = inSeconds(Math::age(record, ko::Clock::now()));
  sensor.age = std::max(age, sensor.age.value_or(age));
  const auto nearest = nearestObstacle(record);
  if (nearest) sensor.nearest = std::min(*nearest, sensor.nearest.value_or(*nearest));
  const PlacedRecord placed = place(record, xPoseAt(record.timestamp), robot.getFrame());
  const auto points = placed.echo ? arcOf(placed) : placed.hits;
  sensor.points.insert(sensor.points.end(), points.begin(), points.end());
  if (record.fieldOfView.maxRange > 0.0f && record.fieldOfView.angularRange > 0.0f) {
    sensor.view = SensorState::View{placed.origin, record.fieldOfView};
  }
}

void SensorLook::noteMeasurements() {
  const auto now = ko::Clock::now();
  if (now < noteNext) return;
  noteNext = now + kRefreshPeriod - now.time_since_epoch() % kRefreshPeriod;
  for (const auto& record : robot.getManager().getMetricalData()) {
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
