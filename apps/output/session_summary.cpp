#include "apps/output/session_summary.h"

#include <algorithm>
#include <ostream>

#include "apps/output/lines.h"
#include "outlets/files/internal/table.h"
#include "session/internal/number_text.h"

namespace QV::app {

void SessionSummary::add(const session::Snapshot& snapshot) {
  for (const auto& sensor : snapshot.sensors) {
    if (!sensor.records.empty()) heard.insert(sensor.name);
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

void SessionSummary::print(std::ostream& out, const SilentSensors& silent) const {
  std::vector<std::string> titles{"sensor", "family", ">records", ">points", ">nearest m"};
  if (!silent.empty()) titles.emplace_back("no record, because");
  outlets::Table table(titles);
  for (const auto& [name, entry] : entries) {
    table.add({name, entry.family, std::to_string(entry.records), std::to_string(entry.points),
               entry.nearest ? session::fixed(*entry.nearest, 3) : "-"});
  }
  for (const auto& sensor : silent)
    table.add({sensor.name, sensor.family, "0", "0", "-", sensor.why});
  table.print(out, getLineWidth());
}

}  // namespace QV::app
