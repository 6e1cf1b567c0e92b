#pragma once

#include <cstddef>
#include <iosfwd>
#include <map>
#include <optional>
#include <string>

#include "session/snapshot.h"

namespace QV::app {

/** What each sensor has reported over a session. */
class SessionSummary {
 public:
  void add(const session::Snapshot& snapshot);
  /** A table: sensor, family, records, points, nearest obstacle. */
  void print(std::ostream& out) const;

 private:
  struct Entry {
    std::string family;
    std::size_t records = 0;
    std::size_t points = 0;
    std::optional<float> nearest;
  };
  std::map<std::string, Entry> entries;
};

}  // namespace QV::app
