#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/model/robot.h"
#include "robot/world/faults/fault.h"

namespace QV::robot {

/** The sensor of the manager that no configuration names. */
constexpr char kPeoplePerception[] = "PeoplePerception";

/** Which sensors of a robot fail, how and when. Safe from any thread. */
class FaultPlan {
 public:
  /** Times count from `start`. */
  FaultPlan(const Model::Robot& robot, ko::Clock::time_point start);

  /** See VirtualRobot. */
  void add(const Fault& fault);
  void clear(const std::string& sensor);

  std::vector<std::string> getSensors() const;
  std::vector<FaultKind> getPossible(const std::string& sensor) const;

  /** What ails a sensor at a time; nothing for a name that is not known. */
  std::optional<FaultKind> find(const std::string& sensor, ko::Clock::time_point time) const;

 private:
  const std::vector<FaultKind>& xPossible(const std::string& sensor) const;

  const ko::Clock::time_point start;
  std::map<std::string, std::vector<FaultKind>> possible;
  mutable std::mutex mutex;
  std::map<std::string, std::vector<Fault>> faults;
};

}  // namespace QV::robot
