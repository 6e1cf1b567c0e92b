#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "robot/world/faults/fault.h"

namespace QV::robot {

/** The faults of a robot's sensors. Thread-safe, except addSensor(). */
class FaultPlan {
 public:
  /** Times count from `start`. */
  explicit FaultPlan(ko::Clock::time_point start) : start(start) {}

  /** Adds a sensor that can fail; without a rate it can't be slow. Call it before anybody else
   * uses the plan. */
  void addSensor(const std::string& name, bool hasRate);

  /** See VirtualRobot. */
  void add(const Fault& fault);
  void clear(const std::string& sensor);

  std::vector<std::string> getSensors() const;
  /** Returns the faults by sensor, in the order in which they were set. */
  std::vector<Fault> getAll() const;
  std::vector<FaultKind> getPossible(const std::string& sensor) const;

  /** Finds the fault of a sensor at a time; nothing for an unknown name. */
  std::optional<FaultKind> find(const std::string& sensor, ko::Clock::time_point time) const;

 private:
  const std::vector<FaultKind>& xPossible(const std::string& sensor) const;

  const ko::Clock::time_point start;
  std::map<std::string, std::vector<FaultKind>> possible;
  mutable std::mutex mutex;
  std::map<std::string, std::vector<Fault>> faults;
};

}  // namespace QV::robot
