#pragma once

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "platform/model/sensor_config.h"
#include "robot/world/units/internal/garbage.h"
#include "robot/world/units/sensor_unit.h"
#include "robot/world/units/unit_factory.h"

namespace QV::robot {

/**
 * The bumpers of a robot, the links that carry touch sensors. Pressed are those that cover the
 * direction in which the body touches something, or else the one that comes nearest. A change is
 * raised as the event "TouchChanged": [[link, true, [2]] or [link, false], ...].
 */
class TouchUnits : public SensorUnit {
 public:
  TouchUnits(const std::vector<Model::SensorConfig>& configs, const UnitContext& context);
  ~TouchUnits() override;

  void measure(ko::Clock::time_point now) override;

 private:
  class Bumper;

  std::set<std::string> xFindPressed(float contact) const;
  void xRaiseGarbage(const Bumper& bumper, ko::Clock::time_point now);

  const UnitContext context;
  std::vector<std::unique_ptr<Bumper>> bumpers;
  Garbage garbage;
  ko::Clock::time_point garbageDue;
};

UnitFactory::Units makeTouchUnits(const std::vector<Model::SensorConfig>& configs,
                                  const UnitContext& context);

}  // namespace QV::robot
