#include "apps/ros2/heard_arguments.h"

#include <CLI/CLI.hpp>

#include "apps/choices.h"

namespace QV::app {

void HeardArguments::addTo(CLI::App& command) {
  CLI::Option* const flag =
      command.add_flag("--from-ros2", asked,
                       "read a robot on the ROS 2 graph; its description: --robot, "
                       "/robot_description, or derived from its topics (see docs/ros2-robot.md)");
  flag->excludes("--kind");
  takesOneOf(*command.add_flag(
                 "--use-sim-time{true}", simTime,
                 "use /clock (=false: the wall clock), at up to ten times real time; default: "
                 "/clock if it is published"),
             {"true", "false"})
      .needs(flag);
  command.add_option("--from-namespace", nameSpace, "namespace of the robot, for example robot1")
      ->needs(flag);
  command
      .add_option("--from-remap", remaps,
                  "FROM:=TO, the robot's own name of a topic, for example /odom:=/base/odom; "
                  "repeat for more")
      ->allow_extra_args(false)
      ->needs(flag);
  joining.addTo(command);
}

}  // namespace QV::app
