#pragma once

#include <string>
#include <vector>

#include <CLI/App.hpp>

#include "apps/ros2/join_arguments.h"

namespace QV::app {

/** The arguments of the command line about a robot on a ROS 2 graph. */
struct GraphArguments {
  std::string node = {};
  std::string nameSpace = {};
  bool hasOwnFrames = false;
  std::string framePrefix = {};
  std::vector<std::string> frames = {};
  std::vector<std::string> remaps = {};
  std::string navigation = "own";
  std::string noEcho = "max";
  bool isDriven = false;
  JoinArguments joining = {};

  /** Gives the options. */
  std::vector<CLI::Option*> addTo(CLI::App& command);
};

}  // namespace QV::app
