#pragma once

#include <memory>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "platform/model/robot.h"
#include "robot/world/units/unit_context.h"

namespace QV::robot {

/**
 * The bumpers of a robot, the links that carry sensors of type 2. A change is raised as the event
 * "TouchChanged": [[link, true, [2]] or [link, false], ...]. For one thread at a time.
 */
class TouchUnits {
 public:
  TouchUnits(const Model::Robot& robot, const UnitContext& context);
  ~TouchUnits();

  /**
   * `contact` is the direction in which the root link touches something, in radians: pressed are
   * the bumpers that cover it, or else the one that comes nearest. Answers their links.
   */
  std::set<std::string> update(std::optional<float> contact);

 private:
  class Bumper;

  std::set<std::string> xFindPressed(float contact) const;
  void xRaiseNonsense(const Bumper& bumper, ko::Clock::time_point now);

  const UnitContext context;
  std::vector<std::unique_ptr<Bumper>> bumpers;
  std::mt19937 nonsense;
  ko::Clock::time_point nonsenseDue;
};

}  // namespace QV::robot
