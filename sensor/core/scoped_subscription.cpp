#include "sensor/core/scoped_subscription.h"

#include <exception>
#include <utility>

#include "platform/ko/clock.h"
#include "platform/ko/log.h"

namespace QV::sensor {

// A sensor that throws has lost the subscriber all the same, but keeps those after it from losing
// theirs: so once more for each sensor at the most.
void unsubscribeGuarded(SensorManager& manager, const std::string& subscriber,
                        const std::set<std::string>& names) noexcept {
  const auto logFailure = [&subscriber](const std::string& reason) {
    ko::log::error("Navigation.ScopedSubscription", "unsubscribeGuarded")
        << "Unable to unsubscribe \"" << subscriber << "\"" << reason;
  };
  for (std::size_t attempts = manager.getSensorList().size() + 1; attempts > 0; --attempts) {
    try {
      manager.unsubscribe(subscriber, names);
      return;
    } catch (const std::exception& exception) {
      logFailure(std::string(": ").append(exception.what()));
    } catch (...) {
      logFailure("");
    }
  }
}

std::map<std::string, std::string> findMissingRecords(const SensorManager& manager,
                                                      const std::set<std::string>& names) {
  std::map<std::string, std::string> missing;
  for (const std::string& name : names) {
    const bool isThere = manager.isSensor(name) || manager.isFamily(name);
    if (!isThere) missing.emplace(name, "there is no such sensor or family");
  }
  manager.getMetricalData(names);
  for (const auto& [sensor, health] : manager.getHealth()) {
    const auto found = manager.isSensor(sensor) ? manager.getSensorPtr(sensor) : nullptr;
    if (!found) continue;
    if (names.count(sensor) == 0 && names.count(found->getFamilyName()) == 0) continue;
    // A sensor with records counts as fresh whatever its health.
    const bool isThere = health.state >= HealthState::sound && health.state < HealthState::late;
    if (!isThere) missing.emplace(sensor, health.reason);
  }
  return missing;
}

ScopedSubscription::ScopedSubscription(SensorManager& manager, const std::string& subscriber)
    : ScopedSubscription(manager, subscriber, manager.getFamilyNames()) {}

ScopedSubscription::ScopedSubscription(SensorManager& manager, const std::string& subscriber,
                                       const std::set<std::string>& names)
    : manager(&manager), subscriber(subscriber), names(names) {
  try {
    manager.subscribe(subscriber, names);
  } catch (...) {
    xRelease();
    throw;
  }
}

ScopedSubscription::~ScopedSubscription() {
  xRelease();
}

ScopedSubscription::ScopedSubscription(ScopedSubscription&& other) noexcept
    : manager(std::exchange(other.manager, nullptr)),
      subscriber(std::move(other.subscriber)),
      names(std::move(other.names)) {}

ScopedSubscription& ScopedSubscription::operator=(ScopedSubscription&& other) noexcept {
  if (this == &other) return *this;
  xRelease();
  manager = std::exchange(other.manager, nullptr);
  subscriber = std::move(other.subscriber);
  names = std::move(other.names);
  return *this;
}

std::map<std::string, std::string> ScopedSubscription::awaitRecords(ko::Duration limit) const {
  constexpr int kPollMs = 10;
  if (!manager) return {};
  const auto end = ko::Clock::now() + limit;
  while (true) {
    auto missing = findMissingRecords(*manager, names);
    if (missing.empty() || ko::Clock::now() >= end) return missing;
    ko::os::msleep(kPollMs);
  }
}

void ScopedSubscription::xRelease() noexcept {
  if (manager) unsubscribeGuarded(*std::exchange(manager, nullptr), subscriber, names);
}

}  // namespace QV::sensor
