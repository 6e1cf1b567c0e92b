#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "platform/api.h"
#include "platform/math/position.h"
#include "platform/math/sensor_field_of_view_2d.h"
#include "robot/world/robot_description.h"
#include "session/open.h"

namespace QV::session {

/** A sensor and where it sits, in the frame of its link or, simulated, of the robot. m, rad. */
struct ListedSensor {
  std::string family;
  /** The name to subscribe by; of one that can't be built, its description's name. */
  std::string name;
  Math::SensorFieldOfView2D fieldOfView;
  Math::Position3D position;
  float heading = 0.0f;
  // These members are set for described sensors only.
  int type = 0;
  std::size_t keys = 0;
  std::string link = {};
  /** The name in the description; several may be one sensor, and one may be in none. */
  std::string describedAs = {};
  bool canBeBuilt = true;
};

/** Lists the sensors of a kind by family and name; UsageError for a kind without sensors. */
QV_API std::vector<ListedSensor> sensorsOfKind(int kind);

/**
 * All that are described, by their names there, those of no family too; then those that the library
 * adds. What can be built is tried in an empty room; if the robot can't stand there, all count as
 * what they are described as. `options` tells what makes them.
 */
QV_API std::vector<ListedSensor> sensorsOf(const robot::RobotDescription& description,
                                           const OpenOptions& options = {});

}  // namespace QV::session
