// Takes the place of graph_link.cpp in a build without the graph.
#include "apps/ros2/graph_link.h"
#include "session/usage_error.h"

namespace QV::app {

namespace {

[[noreturn]] void refuse() {
  throw session::UsageError(
      "--ros2: this program was built without ROS 2; build with QV_BUILD_ROS2_GRAPH=ON");
}

}  // namespace

class GraphLink::Impl {};

GraphLink::GraphLink(const GraphArguments&) {
  refuse();
}

GraphLink::~GraphLink() = default;
void GraphLink::open(session::Session&) {}
void GraphLink::close() {}
void GraphLink::obey() {}

std::shared_ptr<outlets::Outlet> GraphLink::getOutlet() const {
  return nullptr;
}

std::string GraphLink::describe() const {
  return "";
}

std::string listGraphTopics(const GraphArguments&, session::Session&) {
  refuse();
}

}  // namespace QV::app
