#pragma once

#include <boost/shared_ptr.hpp>

#include "robot/services/memory_service.h"
#include "robot/world/fault_plan.h"
#include "robot/world/surroundings.h"
#include "robot/world/world_options.h"

namespace QV::robot {

/** What all sensor units of a robot measure, and where they write. */
struct UnitContext {
  boost::shared_ptr<Surroundings> surroundings;
  boost::shared_ptr<const FaultPlan> faults;
  boost::shared_ptr<MemoryService> memory;
  WorldOptions options;
};

}  // namespace QV::robot
