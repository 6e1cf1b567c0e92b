#include "apps/ros2/heard_session.h"

#include <stdexcept>
#include <utility>

#include "ros2/link/heard_robot.h"
#include "session/usage_error.h"

namespace QV::app {
namespace {

/** Calls `make`; an error becomes one of the command line. */
template <typename Make>
auto naming(const Make& make) {
  try {
    return make();
  } catch (const std::exception& error) {
    throw session::UsageError(std::string("--from-ros2: ") + error.what());
  }
}

void addRemap(ros2::GraphOptions& graph, const std::string& prefix, const std::string& text) {
  const auto split = text.find(":=");
  if (split == std::string::npos || split == 0 || split + 2 == text.size())
    throw session::UsageError("--from-remap: FROM:=TO expected, \"" + text + "\" given");
  const std::string from = text.substr(0, split);
  graph.remaps[from.front() == '/' ? from : prefix + "/" + from] = text.substr(split + 2);
}

ros2::HeardRobotOptions optionsOf(const HeardArguments& arguments, const std::string& description) {
  ros2::HeardRobotOptions options;
  const std::string& name = arguments.nameSpace;
  if (!name.empty()) options.nameSpace = name.front() == '/' ? name : "/" + name;
  const std::string prefix = options.nameSpace == "/" ? "" : options.nameSpace;
  for (const std::string& remap : arguments.remaps) addRemap(options.graph, prefix, remap);
  if (!arguments.simTime.empty()) options.usesSimTime = arguments.simTime == "true";
  options.description = description;
  return options;
}

}  // namespace

std::unique_ptr<session::Session> openHeardSession(const HeardArguments& arguments,
                                                   const std::string& description,
                                                   boost::shared_ptr<const OccupancyMap> map) {
  return naming([&] {
    auto options = optionsOf(arguments, description);
    options.map = std::move(map);
    return ros2::openHeardRobot(options);
  });
}

std::string describeHeardRobot(const HeardArguments& arguments, const std::string& description) {
  return naming([&] { return ros2::describeHeardRobot(optionsOf(arguments, description)); });
}

}  // namespace QV::app
