#pragma once

#include <string>
#include <vector>

#include <CLI/App.hpp>

#include "apps/ros2/join_arguments.h"

namespace QV::app {

/** The arguments of the command line for reading a robot on a ROS 2 graph. */
struct HeardArguments {
  bool asked = false;
  /** "true", "false", or empty if nobody has said. */
  std::string simTime = {};
  std::string nameSpace = {};
  std::vector<std::string> remaps = {};
  JoinArguments joining = {};

  /** Adds --from-ros2 and its further options. */
  void addTo(CLI::App& command);
};

}  // namespace QV::app
