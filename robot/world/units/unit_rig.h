#pragma once

#include <memory>
#include <string>

#include <boost/shared_ptr.hpp>

#include "platform/api.h"
#include "platform/middleware/qv_broker.h"
#include "platform/navigation/occupancy_map.h"
#include "robot/world/faults/fault.h"
#include "robot/world/robot_description.h"
#include "robot/world/units/unit_context.h"
#include "robot/world/units/unit_factory.h"
#include "robot/world/world_options.h"

namespace QV::robot {

/**
 * A test rig, to try sensor units alone: a robot with all its services at a broker of its own, but
 * that nothing moves. A unit measures when it is asked to, and what is around it is what
 * getContext().getSurroundings().setMoment says. Not copyable.
 */
class QV_API UnitRig {
 public:
  /** Stands at the options' start, without their people. Errors as of VirtualRobot. */
  UnitRig(const RobotDescription& description, boost::shared_ptr<const OccupancyMap> map,
          const WorldOptions& options = {});
  /** Units must have ended before. */
  ~UnitRig();
  UnitRig(const UnitRig&) = delete;
  UnitRig& operator=(const UnitRig&) = delete;

  /** The context for a unit that is made by hand, and to read what it wrote. */
  const UnitContext& getContext() const;
  const boost::shared_ptr<QVBroker>& getBroker() const;
  /** A configuration of the description; an unknown name: std::out_of_range. */
  const Model::SensorConfig& getConfig(const std::string& sensor) const;

  /** The units of all its sensors, once: they take the services over. */
  UnitFactory::Units make(const UnitFactory& factory = UnitFactory::standard()) const;

  /** See VirtualRobot; of any sensor whose type has a row. */
  void setFault(const Fault& fault);
  void clearFault(const std::string& sensor);

 private:
  class Impl;
  const std::unique_ptr<Impl> impl;
};

}  // namespace QV::robot
