#include "apps/ros2/heard_arguments.h"

#include <CLI/CLI.hpp>

namespace QV::app {

void HeardArguments::addTo(CLI::App& command) {
  CLI::Option* const flag =
      command.add_flag("--from-ros2", asked,
                       "a robot of the ROS 2 graph, described by --robot, by itself or after its "
                       "topics (see docs/ros2-robot.md)");
  flag->excludes("--kind");
  command
      .add_flag("--use-sim-time{true}", simTime,
                "time goes by /clock, or does not with =false (default: if somebody publishes it)")
      ->check(CLI::IsMember({"true", "false"}))
      ->needs(flag);
  command.add_option("--from-namespace", nameSpace, "of the robot, as robot1")->needs(flag);
  command
      .add_option("--from-remap", remaps,
                  "FROM:=TO, the name that a topic really has, as /odom:=/base/odom; repeat for "
                  "more")
      ->allow_extra_args(false)
      ->needs(flag);
}

}  // namespace QV::app
