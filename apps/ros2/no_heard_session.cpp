// Takes the place of heard_session.cpp in a build without the graph.
#include "apps/ros2/heard_session.h"
#include "session/usage_error.h"

namespace QV::app {
namespace {

[[noreturn]] void refuseGraph() {
  throw session::UsageError(
      "--from-ros2: this build has no ROS 2 graph; one with QV_BUILD_ROS2_GRAPH=ON has");
}

}  // namespace

std::unique_ptr<session::Session> openHeardSession(const HeardArguments&, const std::string&,
                                                   const sensor::SensorFactory&,
                                                   boost::shared_ptr<const OccupancyMap>) {
  refuseGraph();
}

std::string describeHeardRobot(const HeardArguments&, const std::string&,
                               const sensor::SensorFactory&) {
  refuseGraph();
}

}  // namespace QV::app
