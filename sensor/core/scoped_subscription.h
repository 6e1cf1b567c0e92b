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
 * The sensors, of these sensors and families, without a fresh record, and why; an unknown name,
 * too. Reads them, since that is all that makes a sensor measure where nothing refreshes.
 */
QV_API std::map<std::string, std::string> findMissingRecords(const SensorManager& manager,
                                                             const std::set<std::string>& names);

/**
 * A subscription that ends with its scope: subscribes in the constructor and unsubscribes the same
 * names in the destructor, also when an exception passes by. Movable; a moved-from one does
 * nothing. The manager must outlive it.
 */
class QV_API ScopedSubscription {
 public:
  /** To every family. */
  ScopedSubscription(SensorManager& manager, const std::string& subscriber);
  /** What starting the hardware throws leaves the constructor, with nothing left subscribed. */
  ScopedSubscription(SensorManager& manager, const std::string& subscriber,
                     const std::set<std::string>& names);
  ~ScopedSubscription();
  ScopedSubscription(ScopedSubscription&& other) noexcept;
  ScopedSubscription& operator=(ScopedSubscription&& other) noexcept;

  /**
   * Waits until each of its sensors has a fresh record, or a reason for none, at most `limit` of
   * ko's time. Returns what was missing by then, and why, by sensor; nothing where all are there.
   * Where nothing refreshes the records it reads them itself.
   */
  std::map<std::string, std::string> awaitRecords(ko::Duration limit) const;

 private:
  void xRelease() noexcept;

  SensorManager* manager;
  std::string subscriber;
  std::set<std::string> names;
};

}  // namespace QV::sensor
