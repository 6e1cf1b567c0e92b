#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "platform/api.h"
#include "platform/ko/clock.h"
#include "platform/model/robot.h"

namespace QV {
class QVBroker;
}

namespace QV::robot {

class DeviceManager;

/**
 * The operation mode that some lasers share. What the device manager's actuator is commanded shows
 * in a memory key after a delay, as a laser takes its time to start; a command takes the place of
 * one that does not show yet. It writes that key, an int, 0 at first. Not copyable; safe from any
 * thread. Its end gives the actuator back to memory, and drops what does not show yet.
 */
class QV_API LaserModeActuator {
 public:
  /** Called with a mode before the key shows it, one call at a time; must not call this object. */
  using Listener = std::function<void(int mode)>;

  /** Throws QVError if the key can't be written. */
  LaserModeActuator(const boost::shared_ptr<QVBroker>& broker,
                    const boost::shared_ptr<DeviceManager>& devices, const std::string& actuator,
                    const std::string& modeKey, ko::Duration delay, Listener listener = {});
  ~LaserModeActuator();
  LaserModeActuator(const LaserModeActuator&) = delete;
  LaserModeActuator& operator=(const LaserModeActuator&) = delete;

  /**
   * Sets the delay of commands from now on. Not positive: they show before the device manager's
   * `set` returns. Nothing: they never show, nor do those before.
   */
  void setDelay(std::optional<ko::Duration> delay);

  /** Bits that no mode brings from now on; those that show stay until a mode without them. */
  void setDeadBits(int bits);

 private:
  class State;

  const boost::shared_ptr<DeviceManager> devices;
  const std::string actuator;
  const boost::shared_ptr<State> state;
};

using LaserModes = std::vector<std::unique_ptr<LaserModeActuator>>;

/**
 * Makes each mode that lasers of a robot share, for one that others drive: it shows at once. Throws
 * as ModePairs does.
 */
QV_API LaserModes makeLaserModes(const boost::shared_ptr<QVBroker>& broker,
                                 const boost::shared_ptr<DeviceManager>& devices,
                                 const Model::Robot& robot);

}  // namespace QV::robot
