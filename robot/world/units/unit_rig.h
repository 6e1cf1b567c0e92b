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
 * A test rig for single sensor units: a robot with all its modules at its own broker, which nothing
 * moves. A unit measures when it is called. getContext().getSurroundings().setMoment() sets what is
 * around it.
 * - Frames, units: those of VirtualRobot: the map M; metres, radians.
 * - Lifetime: not copyable; destroy the units first.
 * - Threads: for one thread at a time.
 *
 *     const auto porter = QV::robot::RobotDescription::fromFile("robot/descriptions/porter.urdf");
 *     const QV::robot::UnitRig rig(porter, map);
 *     rig.getContext().getSurroundings().setMoment({{3.0f, 6.3f, 0.0f}});
 *     for (const auto& unit : rig.make()) unit->measure(ko::Clock::now());
 */
class QV_API UnitRig {
 public:
  /** Stands at the start pose of the options, without their people. Throws as VirtualRobot does. */
  UnitRig(const RobotDescription& description, boost::shared_ptr<const OccupancyMap> map,
          const WorldOptions& options = {});
  ~UnitRig();
  UnitRig(const UnitRig&) = delete;
  UnitRig& operator=(const UnitRig&) = delete;

  /** The context for a unit that you create yourself, and for reading what it wrote. */
  const UnitContext& getContext() const;
  const boost::shared_ptr<QVBroker>& getBroker() const;
  /** A configuration of the description; std::out_of_range for an unknown name. */
  const Model::SensorConfig& getConfig(const std::string& sensor) const;

  /** Creates the units of all its sensors, once: they take the services over. */
  UnitFactory::Units make(const UnitFactory& factory = UnitFactory::standard()) const;

  /** See VirtualRobot; for any sensor whose type has a row. */
  void setFault(const Fault& fault);
  void clearFault(const std::string& sensor);

 private:
  class Impl;
  const std::unique_ptr<Impl> impl;
};

}  // namespace QV::robot
