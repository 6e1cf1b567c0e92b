#include "apps/ros2/join_arguments.h"

#include <CLI/CLI.hpp>

namespace QV::app {
namespace {

bool isGiven(const CLI::App& command, const char* option) {
  const CLI::Option* const found = command.get_option_no_throw(option);
  return found && found->count() > 0;
}

}  // namespace

void JoinArguments::addTo(CLI::App& command) {
  command.add_option("--ros-distro", distro,
                     "distribution of the other nodes, for example humble, after which some "
                     "messages changed (default: ROS_DISTRO); none: no node is announced");
  command.add_option("--ros2-interface", networkInterface, "network interface, for example eth0");
  command.parse_complete_callback([this, &command] {
    if (isAlwaysUsed || isGiven(command, "--ros2") || isGiven(command, "--from-ros2")) return;
    for (const char* const option : {"--ros-distro", "--ros2-interface"})
      if (isGiven(command, option)) throw CLI::RequiresError(option, "--ros2 or --from-ros2");
  });
}

}  // namespace QV::app
