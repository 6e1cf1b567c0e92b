#pragma once

#include <functional>
#include <string>

#include "sensor/core/sensor_manager.h"
#include "session/session.h"

namespace QV::session {

/** Keeps a manager's subscriptions to what is demanded. The manager must outlive it. */
class DemandKeeper {
 public:
  /** Told of each change before it is made. */
  using Told =
      std::function<void(const std::string& subscriber, const std::string& sensor, bool on)>;

  explicit DemandKeeper(sensor::SensorManager& manager) : manager(manager) {}
  /** Nobody wants anything any more. */
  ~DemandKeeper() { set({}); }
  DemandKeeper(const DemandKeeper&) = delete;
  DemandKeeper& operator=(const DemandKeeper&) = delete;

  /**
   * Subscribes and unsubscribes where this differs from the demand before, and says so in the log.
   * A sensor whose hardware throws is a warning there, and the others go on.
   */
  void set(const Demand& wanted, const Told& told = {});

 private:
  void xSubscribe(const std::string& subscriber, const std::string& sensor);
  /** In the log, for people. */
  void xTell(const std::string& sensor, const std::string& what) const;

  sensor::SensorManager& manager;
  Demand current;
};

}  // namespace QV::session
