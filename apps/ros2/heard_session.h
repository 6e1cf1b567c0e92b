#pragma once

#include <memory>
#include <string>

#include <boost/shared_ptr.hpp>

#include "apps/ros2/heard_arguments.h"
#include "platform/navigation/occupancy_map.h"
#include "sensor/real/sensor_factory.h"
#include "session/session.h"

namespace QV::app {

/**
 * The robot that a graph tells of. `description` (URDF) is empty where the graph has to tell it,
 * `map` null; `sensors` makes its sensors. UsageError for arguments that are none, and in a build
 * without a graph.
 */
std::unique_ptr<session::Session> openHeardSession(const HeardArguments& arguments,
                                                   const std::string& description,
                                                   const sensor::SensorFactory& sensors,
                                                   boost::shared_ptr<const OccupancyMap> map);

/** Describes the robot. */
std::string describeHeardRobot(const HeardArguments& arguments, const std::string& description,
                               const sensor::SensorFactory& sensors);

}  // namespace QV::app
