#pragma once

#include <string>
#include <vector>

#include "platform/api.h"
#include "platform/ko/clock.h"
#include "platform/middleware/qv_value.h"

namespace QV::robot {

/** A command to an actuator as the device manager takes it: values, each with its time. */
struct DeviceCommand {
  /** The pending values that the new ones replace: none, all, the later or the earlier ones. */
  enum class Mode { merge, clearAll, clearAfter, clearBefore };

  struct TimedValue {
    QVValue value;
    ko::Clock::time_point time;
  };

  std::string key;
  Mode mode;
  std::vector<TimedValue> values;
};

/**
 * Reads [key, mode, [[value, time], ...]]: values are numbers or bools, times counts of
 * milliseconds modulo 2^32, near `now`. Anything else is a QVError of "DCM", "set".
 */
QV_API DeviceCommand parseDeviceCommand(const QVValue& command, ko::Clock::time_point now);

}  // namespace QV::robot
