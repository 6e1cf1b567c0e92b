#pragma once

#include <vector>

#include <boost/shared_ptr.hpp>

#include "robot/world/robot_description.h"
#include "robot/world/units/internal/unit_parts.h"

namespace QV::robot {

/**
 * The services of a robot, registered at a broker, for the units that are made meanwhile. They are
 * taken back again unless keep() says that they stay. Not copyable.
 */
class RobotServices {
 public:
  /** A name in use at the broker: QVError, and none is registered. */
  RobotServices(const boost::shared_ptr<QVBroker>& broker, const RobotDescription& description,
                const UnitContext& context, const boost::shared_ptr<MotionService>& motion);
  ~RobotServices();
  RobotServices(const RobotServices&) = delete;
  RobotServices& operator=(const RobotServices&) = delete;

  const UnitServices& get() const { return services; }
  void keep() { modules.clear(); }

 private:
  UnitParts& units;
  UnitServices services;
  std::vector<boost::shared_ptr<QVModule>> modules;
};

}  // namespace QV::robot
