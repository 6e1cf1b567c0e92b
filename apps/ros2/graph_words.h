#pragma once

#include <string>

#include "ros2/graph/graph.h"

namespace QV::app {

/** Says which graph that is and who is on it: "ROS 2 domain 0, on this machine only (...)". */
std::string describeGraph(const ros2::GraphOptions& options);

}  // namespace QV::app
