#include "apps/output/session_summary.h"

#include <algorithm>
#include <ostream>

#include "outlets/files/internal/table.h"
#include "session/internal/number_text.h"

namespace QV::app {

void SessionSummary::add(const session::Snapshot& snapshot) {
  for (const auto& sensor : snapshot.sensors) {
    for (const auto& record : sensor.records) {
      Entry& entry = entries[record.sensorName];
      entry.family = record.familyName;
      ++entry.records;
      entry.points += record.points.size();
      if (!sensor.nearest) continue;
      entry.nearest = std::min(entry.nearest.value_or(*sensor.nearest), *sensor.nearest);
    }
  }
}

void SessionSummary::print(std::ostream& out) const {
  outlets::Table table({"sensor", "family", ">records", ">points", ">nearest m"});
  for (const auto& [name, entry] : entries) {
    table.add({name, entry.family, std::to_string(entry.records), std::to_string(entry.points),
               entry.nearest ? session::fixed(*entry.nearest, 3) : "-"});
  }
  table.print(out);
}

}  // namespace QV::app
