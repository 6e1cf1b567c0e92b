#pragma once

#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "robot/world/robot_description.h"
#include "session/internal/listed_sensor.h"
#include "session/open.h"

namespace QV::app {

/** True if more is known of the shape than its kind. */
bool isSupported(const Model::CollisionShape& shape);

/** Returns a description with its sensors, as those that `robots` names build them, and shapes. */
nlohmann::ordered_json robotToJson(const robot::RobotDescription& description,
                                   const session::OpenOptions& robots);

/** Returns a kind of simulated robot with its sensors. */
nlohmann::ordered_json kindToJson(int kind, const std::vector<session::ListedSensor>& sensors);

}  // namespace QV::app
