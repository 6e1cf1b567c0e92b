#include "apps/ros2/heard_session.h"

#include <stdexcept>
#include <utility>

#include "apps/output/notes.h"
#include "apps/ros2/graph_words.h"
#include "ros2/link/heard_robot.h"
#include "session/usage_error.h"

namespace QV::app {
namespace {

void addRemap(ros2::GraphOptions& graph, const std::string& prefix, const std::string& text) {
  const auto split = text.find(":=");
  if (split == std::string::npos || split == 0 || split + 2 == text.size())
    throw session::UsageError("--from-remap: FROM:=TO expected, \"" + text + "\" given");
  const std::string from = text.substr(0, split);
  graph.remaps[from.front() == '/' ? from : prefix + "/" + from] = text.substr(split + 2);
}

ros2::HeardRobotOptions optionsOf(const HeardArguments& arguments, const std::string& description,
                                  const sensor::SensorFactory& sensors) {
  ros2::HeardRobotOptions options;
  setGraph(options.graph, arguments.joining);
  const std::string& name = arguments.nameSpace;
  if (!name.empty()) options.nameSpace = name.front() == '/' ? name : "/" + name;
  const std::string prefix = options.nameSpace == "/" ? "" : options.nameSpace;
  for (const std::string& remap : arguments.remaps) addRemap(options.graph, prefix, remap);
  if (!arguments.simTime.empty()) options.usesSimTime = arguments.simTime == "true";
  options.description = description;
  options.sensors = sensors;
  return options;
}

/** Makes it of the options, and says on which graph; what is wrong is what the option says. */
template <typename Make>
auto makeHeard(const HeardArguments& arguments, const std::string& description,
               const sensor::SensorFactory& sensors, const Make& make) {
  std::string where;
  try {
    auto options = optionsOf(arguments, description, sensors);
    where = "listening on " + describeGraph(options.graph);
    auto made = make(options);
    note(where);
    return made;
  } catch (const std::exception& error) {
    const std::string why = std::string("--from-ros2: ") + error.what();
    throw session::UsageError(where.empty() ? why : why + ", " + where);
  }
}

}  // namespace

std::unique_ptr<session::Session> openHeardSession(const HeardArguments& arguments,
                                                   const std::string& description,
                                                   const sensor::SensorFactory& sensors,
                                                   boost::shared_ptr<const OccupancyMap> map) {
  return makeHeard(arguments, description, sensors, [&](ros2::HeardRobotOptions& options) {
    options.map = std::move(map);
    return ros2::openHeardRobot(options);
  });
}

std::string describeHeardRobot(const HeardArguments& arguments, const std::string& description,
                               const sensor::SensorFactory& sensors) {
  return makeHeard(arguments, description, sensors,
                   [](const auto& options) { return ros2::describeHeardRobot(options); });
}

}  // namespace QV::app
