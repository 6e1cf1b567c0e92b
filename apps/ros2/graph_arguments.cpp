#include "apps/ros2/graph_arguments.h"

#include <CLI/CLI.hpp>

#include "apps/choices.h"

namespace QV::app {

std::vector<CLI::Option*> GraphArguments::addTo(CLI::App& command) {
  return {
      command.add_option("--ros2-node", node, "the node's name (default: the robot's)"),
      command.add_option("--ros2-namespace", nameSpace,
                         "namespace of the node and its topics, for example robot1"),
      command.add_flag("--ros2-tf-in-namespace", hasOwnFrames,
                       "tf and tf_static are in the namespace, too"),
      command.add_option("--ros2-frame-prefix", framePrefix,
                         "prefix of all frames except map and utm, for example robot1/"),
      command
          .add_option("--ros2-frame", frames,
                      "NAME:=FRAME, another name for a frame: map, odom, utm, the root link, a "
                      "sensor or NAME_optical of a camera; repeat for more")
          ->allow_extra_args(false),
      command
          .add_option("--ros2-remap", remaps, "FROM:=TO, another name for a topic; repeat for more")
          ->allow_extra_args(false),
      takesOneOf(*command.add_option(
                     "--ros2-navigation", navigation,
                     "own: the robot publishes map to odom and obeys /initialpose and /goal_pose; "
                     "others: AMCL, Nav2 or other nodes do that"),
                 {"own", "others"})
          .capture_default_str(),
      takesOneOf(*command.add_option("--ros2-no-echo", noEcho,
                                     "value of a miss in a Range: max (max_range) or inf"),
                 {"max", "inf"})
          .capture_default_str()};
}

}  // namespace QV::app
