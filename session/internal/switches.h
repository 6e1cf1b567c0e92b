#pragma once

#include <atomic>
#include <functional>
#include <set>
#include <string>

#include "platform/api.h"
#include "sensor/core/sensor_manager.h"

namespace QV::session {

class SessionRobot;

/** Throws UsageError, with the known names, if one of `names` is neither a sensor nor a family. The
 * name of a bumper, which is only a part of a sensor, leads to that sensor's. */
QV_API void checkNames(SessionRobot& robot, const std::set<std::string>& names);

/**
 * The switches of a robot's sensors: subscriptions, enabling, diagnosis. Changes are logged at
 * level info. Thread-safe; the robot must outlive it.
 */
class Switches {
 public:
  explicit Switches(SessionRobot& robot);

  /** Subscribes to sensors or families; throws UsageError for an unknown name. */
  void subscribe(const std::string& subscriber, const std::set<std::string>& names);
  void unsubscribe(const std::string& subscriber, const std::set<std::string>& names);
  /** Subscribes or unsubscribes for somebody who gets no errors: they are logged as warnings. */
  void want(const std::string& subscriber, const std::string& sensor, bool on);
  void enable(const std::string& name, bool on);
  void diagnose(const std::string& sensor, bool success);

  /** True while a sensor is being switched, which may wait for its hardware. */
  bool isBusy() const { return busy > 0; }

 private:
  void xSwitch(const std::set<std::string>& names, const std::string& what,
               const std::function<void()>& action);

  SessionRobot& robot;
  sensor::SensorManager& manager;
  std::atomic<int> busy{0};
};

}  // namespace QV::session
