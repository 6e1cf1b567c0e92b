#pragma once

#include <map>
#include <set>
#include <string>

namespace QV::session {

/** Who wants which sensors: subscriber to sensors. Whoever is not in it wants nothing. */
using Demand = std::map<std::string, std::set<std::string>>;

/** Adds the wishes of others. */
inline void addDemand(Demand& demand, const Demand& others) {
  for (const auto& [subscriber, sensors] : others) {
    demand[subscriber].insert(sensors.begin(), sensors.end());
  }
}

}  // namespace QV::session
