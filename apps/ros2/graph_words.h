#pragma once

#include <string>

#include "apps/ros2/join_arguments.h"
#include "ros2/graph/graph.h"

namespace QV::app {

/** Changes what the command line names; std::invalid_argument for an unknown distribution. */
void setGraph(ros2::GraphOptions& options, const JoinArguments& arguments);

/** Says which graph that is, who is told of it, and in which layout: "ROS 2 domain 0, ...". */
std::string describeGraph(const ros2::GraphOptions& options);

}  // namespace QV::app
