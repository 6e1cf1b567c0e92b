#pragma once

#include <string>

#include "platform/navigation/occupancy_map.h"
#include "sensor/simulation/simulated_sensor_manager.h"

namespace QV::app {

/** Simulated sensors of a kind in a map read from a file. */
class SimulatedRobot {
 public:
  /** UsageError for a kind without sensors; what loading the map throws. */
  SimulatedRobot(int kind, const std::string& mapPath);
  SimulatedRobot(const SimulatedRobot&) = delete;
  SimulatedRobot& operator=(const SimulatedRobot&) = delete;

  const OccupancyMap& getMap() const { return map; }
  sensor::SensorManager& getManager() { return manager; }

  /** Moves the robot in the map; records then carry the same pose. */
  void setPose(const Math::Pose2D& pose) { manager.setPose2D(pose, pose); }

 private:
  OccupancyMap map;
  sensor::SimulatedSensorManager manager;
};

/** UsageError unless there are simulated sensors for `kind`. */
void checkKind(int kind);

/** UsageError, with the names that exist, for a name that is neither a sensor nor a family. */
void checkNames(const sensor::SensorManager& manager, const std::set<std::string>& names);

}  // namespace QV::app
