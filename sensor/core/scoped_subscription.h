#pragma once

#include <map>
#include <set>
#include <string>

#include "platform/api.h"
#include "sensor/core/sensor_manager.h"

namespace QV::sensor {

/**
 * Unsubscribes from all of `names`, whatever the hardware throws; that is logged at error level.
 */
QV_API void unsubscribeGuarded(SensorManager& manager, const std::string& subscriber,
                               const std::set<std::string>& names) noexcept;

/**
 * Finds those of these sensors and families that have no fresh record, and why; unknown names, too.
 * It reads them, since reading is all that makes a simulated sensor measure.
 */
QV_API std::map<std::string, std::string> findMissingRecords(const SensorManager& manager,
                                                             const std::set<std::string>& names);

/**
 * A subscription that ends with its scope: the constructor subscribes, the destructor unsubscribes
 * the same names, also when an exception passes by.
 *
 * - Special values: no names means every family, unknown names are logged and passed over.
 * - Lifetime: movable; a moved-from one does nothing. The manager must outlive it.
 * - Threads: for one thread at a time; the manager behind it is thread-safe.
 * - Errors: what starting the hardware throws leaves the constructor, with nothing left subscribed.
 *   The destructor logs what stopping throws.
 *
 * Subscribe and wait for the first records:
 *
 *     const QV::sensor::ScopedSubscription subscription(manager, "my navigation", {"Laser"});
 *     for (const auto& [sensor, why] : subscription.awaitRecords(seconds(2)))
 *       std::cerr << sensor << " has no record: " << why << '\n';
 */
class QV_API ScopedSubscription {
 public:
  /** Subscribes to every family. */
  ScopedSubscription(SensorManager& manager, const std::string& subscriber);
  /** Subscribes to these sensors and families. What starting the hardware throws passes through,
   * with nothing left subscribed. */
  ScopedSubscription(SensorManager& manager, const std::string& subscriber,
                     const std::set<std::string>& names);
  ~ScopedSubscription();
  ScopedSubscription(ScopedSubscription&& other) noexcept;
  ScopedSubscription& operator=(ScopedSubscription&& other) noexcept;

  /** Waits until each of its sensors has a fresh record, or a reason for none, at most `limit`
   * of ko's time. Returns what was missing by then, and why, by sensor; empty if all are there.
   * It reads where nothing else makes the sensors measure. */
  std::map<std::string, std::string> awaitRecords(ko::Duration limit) const;

 private:
  void xRelease() noexcept;

  SensorManager* manager;
  std::string subscriber;
  std::set<std::string> names;
};

}  // namespace QV::sensor
