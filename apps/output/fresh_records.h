#pragma once

#include <map>
#include <string>

#include "session/snapshot.h"

namespace QV::app {

/** Remembers which records of a session have been written already. */
class FreshRecords {
 public:
  /** The snapshot with those records alone that were in none before. */
  session::Snapshot take(session::Snapshot snapshot);

 private:
  /** The time of the last record, by the sensor that it names. */
  std::map<std::string, ko::Clock::time_point> told;
};

}  // namespace QV::app
