#include "apps/ros2/graph_arguments.h"

#include <CLI/CLI.hpp>

namespace QV::app {

std::vector<CLI::Option*> GraphArguments::addTo(CLI::App& command) {
  return {
      command.add_option("--ros2-node", node, "the node's name (default: the robot's)"),
      command.add_option("--ros2-namespace", nameSpace, "of the node and its topics, as robot1"),
      command.add_flag("--ros2-tf-in-namespace", hasOwnFrames,
                       "tf and tf_static are in the namespace, too"),
      command.add_option("--ros2-frame-prefix", framePrefix,
                         "before every frame but the map's, as robot1/"),
      command
          .add_option("--ros2-frame", frames,
                      "NAME:=FRAME, another name for a frame: map, odom, the root link or a "
                      "sensor; repeat for more")
          ->allow_extra_args(false),
      command
          .add_option("--ros2-remap", remaps, "FROM:=TO, another name for a topic; repeat for more")
          ->allow_extra_args(false),
      command.add_option("--ros-distro", distro,
                         "of the others, as humble: messages changed after it (default: what "
                         "ROS_DISTRO says)"),
      command.add_option("--ros2-interface", networkInterface, "of the network, as eth0"),
      command
          .add_option("--ros2-navigation", navigation,
                      "own: the robot tells map to odom, obeys /initialpose and goes to "
                      "/goal_pose; others: AMCL, Nav2 and the like do")
          ->check(CLI::IsMember({"own", "others"}))
          ->capture_default_str(),
      command
          .add_option("--ros2-no-echo", noEcho,
                      "a Range that met nothing is max, its greatest, or inf")
          ->check(CLI::IsMember({"max", "inf"}))
          ->capture_default_str()};
}

}  // namespace QV::app
