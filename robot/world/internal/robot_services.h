#pragma once

#include <vector>

#include <boost/shared_ptr.hpp>

#include "robot/world/robot_description.h"
#include "robot/world/units/internal/unit_parts.h"

namespace QV::robot {

/**
 * The services of a robot, registered at a broker while its units are created. The destructor
 * removes them, unless keep() was called. Not copyable.
 */
class RobotServices {
 public:
  /** Throws QVError, and registers none, if a name is in use at the broker. */
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
