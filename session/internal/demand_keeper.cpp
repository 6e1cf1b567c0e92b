#include "session/internal/demand_keeper.h"

#include <utility>

namespace QV::session {
namespace {

bool wants(const Demand& demand, const std::string& subscriber, const std::string& sensor) {
  const auto found = demand.find(subscriber);
  return found != demand.end() && found->second.count(sensor) > 0;
}

}  // namespace

void DemandKeeper::set(const Demand& wanted, const Told& told) {
  const Demand before = std::exchange(current, wanted);
  xSwitch(before, wanted, false, told);
  xSwitch(wanted, before, true, told);
}

void DemandKeeper::xSwitch(const Demand& these, const Demand& butThese, bool on,
                           const Told& told) const {
  for (const auto& [subscriber, sensors] : these) {
    for (const std::string& sensor : sensors) {
      if (wants(butThese, subscriber, sensor)) continue;
      if (told) told(subscriber, sensor, on);
      switches.want(subscriber, sensor, on);
    }
  }
}

}  // namespace QV::session
