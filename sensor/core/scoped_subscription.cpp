#include "sensor/core/scoped_subscription.h"

#include <exception>
#include <utility>

#include "platform/ko/log.h"

namespace QV::sensor {

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

// A sensor that throws has lost the subscriber all the same, but keeps those after it from losing
// theirs: so once more for each sensor at the most.
void ScopedSubscription::xRelease() noexcept {
  if (!manager) return;
  SensorManager& owner = *std::exchange(manager, nullptr);
  for (std::size_t attempts = owner.getSensorList().size() + 1; attempts > 0; --attempts) {
    try {
      owner.unsubscribe(subscriber, names);
      return;
    } catch (const std::exception& exception) {
      ko::log::error("Navigation.ScopedSubscription", "xRelease")
          << "Unable to unsubscribe \"" << subscriber << "\": " << exception.what();
    } catch (...) {
      ko::log::error("Navigation.ScopedSubscription", "xRelease")
          << "Unable to unsubscribe \"" << subscriber << "\"";
    }
  }
}

}  // namespace QV::sensor
