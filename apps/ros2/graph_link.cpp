#include "apps/ros2/graph_link.h"

#include <iostream>
#include <map>
#include <sstream>
#include <stdexcept>
#include <utility>
#include <vector>

#include "apps/output/lines.h"
#include "apps/output/notes.h"
#include "apps/ros2/graph_words.h"
#include "outlets/files/internal/table.h"
#include "ros2/link/graph_robot.h"
#include "session/usage_error.h"

namespace QV::app {

namespace {

/** Calls `make`; an invalid name or value becomes an error of the command line. */
template <typename Make>
auto asUsage(const Make& make) {
  try {
    return make();
  } catch (const std::invalid_argument& error) {
    throw session::UsageError(std::string("--ros2: ") + error.what());
  }
}

std::map<std::string, std::string> pairsOf(const char* option,
                                           const std::vector<std::string>& texts) {
  std::map<std::string, std::string> pairs;
  for (const std::string& text : texts) {
    const auto split = text.find(":=");
    if (split == std::string::npos || split == 0 || split + 2 == text.size())
      throw session::UsageError(std::string(option) + ": FROM:=TO expected, \"" + text +
                                "\" given");
    pairs[text.substr(0, split)] = text.substr(split + 2);
  }
  return pairs;
}

std::string nameSpaceOf(const GraphArguments& arguments) {
  const std::string& name = arguments.nameSpace;
  return name.empty() || name.front() == '/' ? (name.empty() ? "/" : name) : "/" + name;
}

ros2::GraphOptions optionsOf(const GraphArguments& arguments) {
  ros2::GraphOptions options = ros2::graphOptionsFromEnvironment();
  setGraph(options, arguments.joining);
  const std::string nameSpace = nameSpaceOf(arguments);
  for (const auto& [from, to] : pairsOf("--ros2-remap", arguments.remaps)) {
    const bool isFull = from.front() == '/';
    options.remaps[isFull ? from : (nameSpace == "/" ? "" : nameSpace) + "/" + from] = to;
  }
  return options;
}

ros2::GraphRobotOptions robotOptionsOf(const GraphArguments& arguments) {
  ros2::GraphRobotOptions options;
  options.name = arguments.node;
  options.nameSpace = nameSpaceOf(arguments);
  options.hasOwnFrames = arguments.hasOwnFrames;
  options.frames = pairsOf("--ros2-frame", arguments.frames);
  options.framePrefix = arguments.framePrefix;
  options.isDriven = arguments.isDriven;
  options.knowsItsWay = arguments.navigation == "own";
  options.noEchoIsInfinite = arguments.noEcho == "inf";
  return options;
}

void checkRemaps(const ros2::Graph& graph) {
  const auto unused = graph.findUnusedRemaps();
  if (!unused.empty())
    throw session::UsageError("--ros2-remap: a topic of this robot expected, \"" + unused.front() +
                              "\" given; ros2 --list shows them");
}

std::string qosText(const ros2::Qos& qos) {
  return std::string(qos.reliable ? "reliable" : "best effort") +
         (qos.transientLocal ? ", transient local, " : ", volatile, ") + std::to_string(qos.depth);
}

}  // namespace

class GraphLink::Impl {
 public:
  explicit Impl(const GraphArguments& arguments)
      : options(asUsage([&] { return optionsOf(arguments); })),
        robotOptions(robotOptionsOf(arguments)),
        graph(asUsage([&] { return ros2::Graph(options); })) {}

  const ros2::GraphOptions options;
  const ros2::GraphRobotOptions robotOptions;
  ros2::Graph graph;
  std::shared_ptr<ros2::GraphRobot> robot;
};

GraphLink::GraphLink(const GraphArguments& arguments) : impl(std::make_unique<Impl>(arguments)) {}

GraphLink::~GraphLink() = default;

void GraphLink::open(session::Session& session) {
  close();
  impl->robot = asUsage([&] {
    auto robot = std::make_shared<ros2::GraphRobot>(impl->graph, session, impl->robotOptions);
    checkRemaps(impl->graph);
    return robot;
  });
}

void GraphLink::close() {
  if (!impl->robot) return;
  if (const auto lost = impl->robot->getLostCount())
    complain(std::to_string(lost) + " messages to the graph could not be sent in time");
  impl->robot.reset();
}

void GraphLink::obey() {
  if (impl->robot) impl->robot->obey();
}

std::shared_ptr<outlets::Outlet> GraphLink::getOutlet() const {
  return impl->robot;
}

std::string GraphLink::describe() const {
  return describeGraph(impl->options);
}

std::string listGraphTopics(const GraphArguments& arguments, session::Session& session) {
  ros2::GraphOptions options = asUsage([&] { return optionsOf(arguments); });
  options.range = ros2::DiscoveryRange::off;
  options.configuration.clear();
  return asUsage([&] {
    ros2::Graph nobodys(options);
    const ros2::GraphRobot robot(nobodys, session, robotOptionsOf(arguments));
    checkRemaps(nobodys);
    outlets::Table table({"topic", "type", "", "quality of service", "in DDS"});
    for (const auto& wire : robot.getTopics())
      table.add({wire.topic.name, wire.topic.type, wire.isInput ? "in" : "out",
                 qosText(wire.topic.qos), wire.ddsName + " " + wire.ddsType});
    std::ostringstream text;
    table.print(text, getLineWidth());
    return text.str();
  });
}

}  // namespace QV::app
