#include "apps/run/run_summary.h"

#include <algorithm>
#include <ostream>

#include "apps/output/number_text.h"
#include "apps/output/record_output.h"
#include "apps/output/table.h"

namespace QV::app {

void RunSummary::add(const std::vector<Math::MetricalData>& records) {
  for (const auto& record : records) {
    Entry& entry = entries[record.sensorName];
    entry.family = record.familyName;
    ++entry.records;
    entry.points += record.points.size();
    const auto nearest = nearestObstacle(record);
    if (nearest) entry.nearest = std::min(entry.nearest.value_or(*nearest), *nearest);
  }
}

void RunSummary::print(std::ostream& out) const {
  Table table({"sensor", "family", ">records", ">points", ">nearest m"});
  for (const auto& [name, entry] : entries) {
    table.add({name, entry.family, std::to_string(entry.records), std::to_string(entry.points),
               entry.nearest ? fixed(*entry.nearest, 3) : "-"});
  }
  table.print(out);
}

}  // namespace QV::app
