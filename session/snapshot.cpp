#include "session/snapshot.h"

#include <algorithm>

namespace QV::session {
namespace {

bool goesBefore(const SensorState& a, const SensorState& b) {
  return a.name < b.name;
}

}  // namespace

std::vector<SensorState> sensorsByName(const Snapshot& snapshot) {
  std::vector<SensorState> sensors = snapshot.sensors;
  std::sort(sensors.begin(), sensors.end(), goesBefore);
  return sensors;
}

std::vector<Math::MetricalData> recordsOf(const Snapshot& snapshot) {
  std::vector<const SensorState*> sensors;
  sensors.reserve(snapshot.sensors.size());
  for (const SensorState& sensor : snapshot.sensors) sensors.push_back(&sensor);
  std::sort(sensors.begin(), sensors.end(),
            [](const auto* a, const auto* b) { return goesBefore(*a, *b); });
  std::vector<Math::MetricalData> records;
  for (const SensorState* sensor : sensors) {
    records.insert(records.end(), sensor->records.begin(), sensor->records.end());
  }
  return records;
}

}  // namespace QV::session
