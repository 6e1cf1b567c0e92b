#pragma once

#include <string>

#include <boost/shared_ptr.hpp>

#include "robot/services/memory_service.h"
#include "robot/world/faults/fault_plan.h"
#include "robot/world/scene/surroundings.h"
#include "robot/world/world_options.h"

namespace QV::robot {

/** What all sensor units of a robot measure, and where they write. */
struct UnitContext {
  boost::shared_ptr<Surroundings> surroundings;
  boost::shared_ptr<const FaultPlan> faults;
  boost::shared_ptr<MemoryService> memory;
  WorldOptions options;

  /** Leaves no number in a key; one that somebody is connected to keeps its last. */
  void withdraw(const std::string& key) const;
};

}  // namespace QV::robot
