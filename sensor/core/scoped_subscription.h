#pragma once

#include <map>
#include <set>
#include <string>

#include "platform/api.h"
#include "sensor/core/sensor_manager.h"

namespace QV::sensor {

/** Unsubscribes from all of `names`. Exceptions of hardware are logged as errors. */
QV_API void unsubscribeGuarded(SensorManager& manager, const std::string& subscriber,
                               const std::set<std::string>& names) noexcept;

/** Finds the sensors of these names and families that have no fresh record and are not sound
 * without one, and unknown names, each with what is wrong. It reads the sensors, because simulated
 * ones measure only then. */
QV_API std::map<std::string, std::string> findMissingRecords(const SensorManager& manager,
                                                             const std::set<std::string>& names);

/**
 * A subscription that ends with its scope, also after an exception.
 * - Special values: no names means every family. Unknown names are logged and skipped.
 * - Lifetime: movable; a moved-from one does nothing. The manager must outlive it.
 * - Threads: for one thread at a time; the manager behind it is thread-safe.
 * - Errors: if a start of hardware throws, the constructor throws and nothing stays subscribed. The
 *   destructor logs an exception of a stop.
 *
 *     const QV::sensor::ScopedSubscription subscription(manager, "my navigation", {"Laser"});
 *     for (const auto& [sensor, why] : subscription.awaitRecords(boost::chrono::seconds(2)))
 *       std::cerr << sensor << " has no record: " << why << '\n';
 */
class QV_API ScopedSubscription {
 public:
  ScopedSubscription(SensorManager& manager, const std::string& subscriber);
  ScopedSubscription(SensorManager& manager, const std::string& subscriber,
                     const std::set<std::string>& names);
  ~ScopedSubscription();
  ScopedSubscription(ScopedSubscription&& other) noexcept;
  ScopedSubscription& operator=(ScopedSubscription&& other) noexcept;

  /** Waits until each of its sensors has a fresh record or is sound without one, as an untouched
   * bumper, at most `limit` of ko::Clock. Returns what findMissingRecords() finds then. */
  std::map<std::string, std::string> awaitRecords(ko::Duration limit) const;

 private:
  void xRelease() noexcept;

  SensorManager* manager;
  std::string subscriber;
  std::set<std::string> names;
};

}  // namespace QV::sensor
