#pragma once

#include <string>
#include <vector>

#include <CLI/App.hpp>

namespace QV::app {

/** The arguments of the command line about a robot that a ROS 2 graph tells of. */
struct HeardArguments {
  bool asked = false;
  /** "true", "false", or empty if nobody has said. */
  std::string simTime = {};
  std::string nameSpace = {};
  std::vector<std::string> remaps = {};

  /** Adds --from-ros2 and what goes with it. */
  void addTo(CLI::App& command);
};

}  // namespace QV::app
