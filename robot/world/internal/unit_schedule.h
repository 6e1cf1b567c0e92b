#pragma once

#include <memory>
#include <string>
#include <vector>

#include "robot/world/units/internal/beat.h"
#include "robot/world/units/unit_factory.h"

namespace QV::robot {

/** The units of a robot, each with its own period. For one thread at a time. */
class UnitSchedule {
 public:
  explicit UnitSchedule(UnitFactory::Units units);

  /** Calls the units that are due. A unit that fails is logged when its failure changes. */
  void measure(ko::Clock::time_point now);

 private:
  struct Entry {
    std::unique_ptr<SensorUnit> unit;
    Beat beat;
    std::string failure = {};
  };

  static void xMeasure(Entry& entry, ko::Clock::time_point now);

  std::vector<Entry> entries;
};

}  // namespace QV::robot
