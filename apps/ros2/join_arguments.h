#pragma once

#include <string>

#include <CLI/App.hpp>

namespace QV::app {

/** The arguments of the command line with which a robot is published and read alike. */
struct JoinArguments {
  /** The name of a distribution, "none", or empty: as the environment says. */
  std::string distro = {};
  std::string networkInterface = {};
  /** True if the command joins a graph without being asked. */
  bool isAlwaysUsed = false;

  /** Adds the options; they need --ros2 or --from-ros2. */
  void addTo(CLI::App& command);
};

}  // namespace QV::app
