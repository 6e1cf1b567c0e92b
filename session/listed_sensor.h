#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "platform/math/position.h"
#include "platform/math/sensor_field_of_view_2d.h"
#include "platform/model/robot.h"

namespace QV::session {

/** A sensor and where it sits, in the frame of its link or, simulated, of the robot. m, rad. */
struct ListedSensor {
  std::string family;
  std::string name;
  Math::SensorFieldOfView2D fieldOfView;
  Math::Position3D position;
  float heading = 0.0f;
  // Of a description only.
  int type = 0;
  std::size_t keys = 0;
  std::string link = {};
};

/** By family and name; UsageError for a kind without sensors. */
std::vector<ListedSensor> sensorsOfKind(int kind);

/** All of them by name, those of no family too. */
std::vector<ListedSensor> sensorsOf(const Model::Robot& robot);

}  // namespace QV::session
