#pragma once

#include <string>

#include "platform/api.h"
#include "platform/ko/clock.h"

namespace QV::robot {

/**
 * A unit that measures for a sensor of a virtual robot, or for several that share hardware. The
 * robot owns it and lets it measure once a period, always in one thread at a time, after the body
 * has moved; units that other threads ask as well lock for themselves. Not copyable.
 */
class QV_API SensorUnit {
 public:
  /** `name` is for the log. A period of 0 stands for each step of the robot. */
  SensorUnit(const std::string& name, ko::Duration period);
  virtual ~SensorUnit();
  SensorUnit(const SensorUnit&) = delete;
  SensorUnit& operator=(const SensorUnit&) = delete;

  const std::string& getName() const { return name; }
  ko::Duration getPeriod() const { return period; }

  /** Measures and writes. What it throws is logged when it changes; it is called again. */
  virtual void measure(ko::Clock::time_point now) = 0;

 private:
  const std::string name;
  const ko::Duration period;
};

}  // namespace QV::robot
