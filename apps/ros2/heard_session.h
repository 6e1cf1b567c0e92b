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
 * Opens the robot on a graph. An empty `description` (URDF) and a null `map` are taken from the
 * graph. Throws UsageError for invalid arguments, and in a build without ROS 2.
 */
std::unique_ptr<session::Session> openHeardSession(const HeardArguments& arguments,
                                                   const std::string& description,
                                                   const sensor::SensorFactory& sensors,
                                                   boost::shared_ptr<const OccupancyMap> map);

/** Describes the robot. */
std::string describeHeardRobot(const HeardArguments& arguments, const std::string& description,
                               const sensor::SensorFactory& sensors);

}  // namespace QV::app
