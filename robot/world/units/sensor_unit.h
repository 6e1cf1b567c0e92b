#pragma once

#include <string>

#include "platform/api.h"
#include "platform/ko/clock.h"

namespace QV::robot {

/**
 * A unit measures for a sensor of a virtual robot, or for several sensors that share hardware. The
 * robot owns it and calls it once per period, after the body has moved, in one thread at a time. A
 * unit that other threads also ask must lock by itself. Not copyable.
 */
class QV_API SensorUnit {
 public:
  /** `name` is for the log. A period of 0 means each step of the robot. */
  SensorUnit(const std::string& name, ko::Duration period);
  virtual ~SensorUnit();
  SensorUnit(const SensorUnit&) = delete;
  SensorUnit& operator=(const SensorUnit&) = delete;

  const std::string& getName() const { return name; }
  ko::Duration getPeriod() const { return period; }

  /** Measures and writes. An exception is logged when it changes; the unit is called again. */
  virtual void measure(ko::Clock::time_point now) = 0;

 private:
  const std::string name;
  const ko::Duration period;
};

}  // namespace QV::robot
