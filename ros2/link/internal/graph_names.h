#pragma once

#include <map>
#include <set>
#include <string>

#include "ros2/link/graph_robot.h"
#include "ros2/recording/internal/frame_names.h"

namespace QV::ros2 {

/** Returns the name that is asked for, or else one after the robot. */
std::string nodeNameOf(const session::Session& session, const std::string& asked);

/** The topics that the sensors' properties "topic" name, by those that they stand for. */
std::map<std::string, std::string> topicsNamedBy(const session::Session& session);

/** The sensors that have frames of their own. */
std::set<std::string> mountedOn(const session::Session& session);

/** std::invalid_argument for a frame that there is not, or a name that is none. */
FrameNames frameNamesOf(const session::Session& session, const GraphRobotOptions& options);

}  // namespace QV::ros2
