#include "apps/output/fresh_records.h"

#include <utility>

namespace QV::app {

session::Snapshot FreshRecords::take(session::Snapshot snapshot) {
  auto now = told;
  for (auto& sensor : snapshot.sensors) {
    std::erase_if(sensor.records, [&](const Math::MetricalData& record) {
      const auto last = told.find(record.sensorName);
      return last != told.end() && last->second == record.timestamp;
    });
    for (const auto& record : sensor.records) now[record.sensorName] = record.timestamp;
  }
  told = std::move(now);
  return snapshot;
}

}  // namespace QV::app
