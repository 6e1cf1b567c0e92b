#include "session/internal/demand_keeper.h"

#include <exception>
#include <utility>

#include "platform/ko/log.h"
#include "sensor/core/scoped_subscription.h"

namespace QV::session {
namespace {

bool wants(const Demand& demand, const std::string& subscriber, const std::string& sensor) {
  const auto found = demand.find(subscriber);
  return found != demand.end() && found->second.count(sensor) > 0;
}

}  // namespace

void DemandKeeper::set(const Demand& wanted, const Told& told) {
  const Demand before = std::exchange(current, wanted);
  for (const auto& [subscriber, sensors] : before) {
    for (const std::string& sensor : sensors) {
      if (wants(wanted, subscriber, sensor)) continue;
      if (told) told(subscriber, sensor, false);
      sensor::unsubscribeGuarded(manager, subscriber, {sensor});
      xTell(sensor, "unsubscribed by " + subscriber);
    }
  }
  for (const auto& [subscriber, sensors] : wanted) {
    for (const std::string& sensor : sensors) {
      if (wants(before, subscriber, sensor)) continue;
      if (told) told(subscriber, sensor, true);
      xSubscribe(subscriber, sensor);
    }
  }
}

void DemandKeeper::xSubscribe(const std::string& subscriber, const std::string& sensor) {
  try {
    manager.subscribe(subscriber, sensor);
    xTell(sensor, "subscribed by " + subscriber);
  } catch (const std::exception& exception) {
    ko::log::warning("Session", "setDemand")
        << sensor << " for " << subscriber << ": " << exception.what();
  }
}

void DemandKeeper::xTell(const std::string& sensor, const std::string& what) const {
  ko::log::info("Session", "setDemand")
      << sensor << ' ' << what << (manager.isSensorStarted(sensor) ? ": started" : ": stopped");
}

}  // namespace QV::session
