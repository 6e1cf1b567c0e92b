#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/model/robot.h"
#include "robot/services/device_manager.h"
#include "robot/services/laser_mode_actuator.h"
#include "robot/world/units/laser_unit.h"

namespace QV::robot {

/**
 * The lasers of a robot, and the operation modes that switch them. The operations are for one
 * thread at a time.
 */
class LaserUnits {
 public:
  LaserUnits(const Model::Robot& robot, const UnitContext& context);

  /** Takes the actuators over; the memory must be at the broker. */
  void connect(const boost::shared_ptr<QVBroker>& broker,
               const boost::shared_ptr<DeviceManager>& devices);

  /** Has those that are off confirm no mode. */
  void update(ko::Clock::time_point now);
  /** Has those scan that are switched on. */
  void scan(ko::Clock::time_point now);

 private:
  /** Those that share an operation mode. */
  struct Group {
    std::vector<boost::shared_ptr<LaserUnit>> lasers;
    std::unique_ptr<LaserModeActuator> actuator;
    int deadBits = 0;
  };

  const UnitContext context;
  /** By the key that the mode shows in. */
  std::map<std::string, Group> groups;
};

}  // namespace QV::robot
