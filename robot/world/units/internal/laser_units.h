#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "robot/services/internal/laser_mode_actuator.h"
#include "robot/world/units/internal/beat.h"
#include "robot/world/units/internal/laser_unit.h"
#include "robot/world/units/sensor_unit.h"
#include "robot/world/units/unit_factory.h"

namespace QV::robot {

/** The lasers of a robot, and the operation modes that switch them. */
class LaserUnits : public SensorUnit {
 public:
  /**
   * Takes the modes' actuators over; the memory must be at the broker. Two actuators for one mode,
   * or two modes for one actuator: std::invalid_argument.
   */
  LaserUnits(const std::vector<Model::SensorConfig>& configs, const UnitContext& context);

  /** Scans with the lasers that are on; those that are off confirm no mode. */
  void measure(ko::Clock::time_point now) override;

 private:
  /** The lasers that share an operation mode. */
  struct Group {
    std::vector<boost::shared_ptr<LaserUnit>> lasers;
    std::unique_ptr<LaserModeActuator> actuator;
    int deadBits = 0;
  };

  void xConnect();
  void xUpdateDeadBits(ko::Clock::time_point now);
  void xScan(ko::Clock::time_point now);

  const UnitContext context;
  /** The groups by the key that their mode shows in. */
  std::map<std::string, Group> groups;
  Beat scanBeat;
};

UnitFactory::Units makeLaserUnits(const std::vector<Model::SensorConfig>& configs,
                                  const UnitContext& context);

}  // namespace QV::robot
