#pragma once

#include <boost/shared_ptr.hpp>

#include "robot/services/internal/memory_service.h"
#include "robot/world/faults/internal/fault_plan.h"
#include "robot/world/scene/internal/scene.h"
#include "robot/world/scene/surroundings.h"
#include "robot/world/units/internal/unit_services.h"
#include "robot/world/units/unit_context.h"

namespace QV::robot {

class MotionService;

/** The parts that the copies of a UnitContext share. */
struct UnitParts {
  /** See UnitRig for the errors. */
  UnitParts(boost::shared_ptr<const OccupancyMap> map, const WorldOptions& options,
            const boost::shared_ptr<MotionService>& motion,
            const boost::shared_ptr<QVBroker>& broker);

  static UnitContext makeContext(boost::shared_ptr<const OccupancyMap> map,
                                 const WorldOptions& options,
                                 const boost::shared_ptr<MotionService>& motion,
                                 const boost::shared_ptr<QVBroker>& broker);
  static UnitParts& of(const UnitContext& context) { return *context.parts; }
  /** Returns the services while units are made; else std::logic_error. */
  static const UnitServices& servicesOf(const UnitContext& context);

  const Scene& getScene() const { return *surroundings.scene; }

  const WorldOptions options;
  Surroundings surroundings;
  FaultPlan faults;
  const boost::shared_ptr<MemoryService> memory;
  /** Theirs who has units made, as long as he does. */
  const UnitServices* services = nullptr;
};

}  // namespace QV::robot
