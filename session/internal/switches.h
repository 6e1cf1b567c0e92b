#pragma once

#include <atomic>
#include <functional>
#include <set>
#include <string>

#include "platform/api.h"
#include "sensor/core/sensor_manager.h"

namespace QV::session {

/** UsageError, with what there is, if one of `names` is neither a sensor nor a family. */
QV_API void checkNames(const sensor::SensorManager& manager, const std::set<std::string>& names);

/**
 * The switches of a robot's sensors: who wants which, which may run, which are sound. What is done
 * is told in the log, at info. Thread-safe; the manager must outlive it.
 */
class Switches {
 public:
  explicit Switches(sensor::SensorManager& manager) : manager(manager) {}

  /** Sensors or families; UsageError for a name that there is not. */
  void subscribe(const std::string& subscriber, const std::set<std::string>& names);
  void unsubscribe(const std::string& subscriber, const std::set<std::string>& names);
  /** Subscribes or unsubscribes on behalf of somebody who can't be told what goes wrong: that is
   * a warning in the log. */
  void want(const std::string& subscriber, const std::string& sensor, bool on);
  void enable(const std::string& name, bool on);
  void diagnose(const std::string& sensor, bool success);

  /** True while a sensor is being switched, which takes as long as its hardware does. */
  bool isBusy() const { return busy > 0; }

 private:
  void xSwitch(const std::set<std::string>& names, const std::string& what,
               const std::function<void()>& action);

  sensor::SensorManager& manager;
  std::atomic<int> busy{0};
};

}  // namespace QV::session
