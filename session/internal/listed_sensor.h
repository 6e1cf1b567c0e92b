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

/** A sensor and its mounting: in the frame of its link, a simulated one in the ground frame.
 * Metres, radians. */
struct ListedSensor {
  std::string family;
  /** The name to subscribe with. For a sensor that can't be built, its name in the description. */
  std::string name;
  Math::SensorFieldOfView2D fieldOfView;
  Math::Position3D position;
  float heading = 0.0f;
  // These members are set for described sensors only.
  int type = 0;
  /** The name of the type's kind; empty if there is none. */
  std::string typeName = {};
  std::size_t keys = 0;
  std::string link = {};
  /** The name in the description. Several of them may form one sensor; a sensor may have none. */
  std::string describedAs = {};
  bool canBeBuilt = true;
};

/** Lists the sensors of a kind by family and name; UsageError for a kind without sensors. */
QV_API std::vector<ListedSensor> sensorsOfKind(int kind);

/**
 * Lists all described sensors by their names there, also those without a family; then those that
 * the library adds. It tries to build them in an empty room. If the robot can't stand there, all
 * count as they are described. `options` has their factories.
 */
QV_API std::vector<ListedSensor> sensorsOf(const robot::RobotDescription& description,
                                           const OpenOptions& options = {});

}  // namespace QV::session
