#pragma once

#include <string>

#include "ros2/graph/graph.h"

namespace QV::app {

/** Says which graph that is and who is told of it: "ROS 2 domain 0, announced on ...". */
std::string describeGraph(const ros2::GraphOptions& options);

}  // namespace QV::app
