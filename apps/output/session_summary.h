#pragma once

#include <cstddef>
#include <iosfwd>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "apps/silent_sensors.h"
#include "session/snapshot.h"

namespace QV::app {

/** The totals of each sensor over a session. */
class SessionSummary {
 public:
  void add(const session::Snapshot& snapshot);
  /** The sensors that gave a record. */
  const std::set<std::string>& getHeard() const { return heard; }
  /** Prints a table: sensor, family, records, points, nearest obstacle; and the silent sensors. */
  void print(std::ostream& out, const SilentSensors& silent = {}) const;

 private:
  struct Entry {
    std::string family;
    std::size_t records = 0;
    std::size_t points = 0;
    std::optional<float> nearest;
  };
  std::map<std::string, Entry> entries;
  std::set<std::string> heard;
};

}  // namespace QV::app
