#include "session/snapshot.h"

#include <algorithm>

namespace QV::session {

std::vector<Math::MetricalData> recordsOf(const Snapshot& snapshot) {
  std::vector<const SensorState*> sensors;
  for (const SensorState& sensor : snapshot.sensors) sensors.push_back(&sensor);
  std::sort(sensors.begin(), sensors.end(),
            [](const auto* a, const auto* b) { return a->name < b->name; });
  std::vector<Math::MetricalData> records;
  for (const SensorState* sensor : sensors) {
    records.insert(records.end(), sensor->records.begin(), sensor->records.end());
  }
  return records;
}

}  // namespace QV::session
