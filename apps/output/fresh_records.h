#pragma once

#include <map>
#include <string>

#include "session/snapshot.h"

namespace QV::app {

/** Knows which records of a session have been told already. */
class FreshRecords {
 public:
  /** The snapshot with those records alone that were in none before. */
  session::Snapshot take(session::Snapshot snapshot);

 private:
  /** By the sensor that a record names: when its last one was made. */
  std::map<std::string, ko::Clock::time_point> told;
};

}  // namespace QV::app
