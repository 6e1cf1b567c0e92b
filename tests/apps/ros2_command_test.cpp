#include <cstdlib>

#include "tests/apps/run_program.h"
#include "tests/support/vocabulary.h"

namespace QV::app {
namespace {

constexpr char kNoGraph[] =
    "this program was built without ROS 2; build with QV_BUILD_ROS2_GRAPH=ON";

bool hasGraph() {
  return run({"ros2", "--list", "--kind", "0"}).error.find(kNoGraph) == std::string::npos;
}

TEST(Ros2Command, listsTopicsWithTheirDdsNames) {
  if (!hasGraph()) GTEST_SKIP() << "skipped: no graph in this build";
  // However narrow the terminal is.
  ::setenv("COLUMNS", "80", 1);
  const Result result = run({"ros2", "--list", "--robot", "porter", "--ros2-namespace", "robot1",
                             "--ros2-remap", "FrontLaser/scan:=/scan"});
  ::unsetenv("COLUMNS");
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_THAT(result.out, testing::ContainsRegex("\n/scan +sensor_msgs/msg/LaserScan +out +reliable"
                                                 ", volatile, 10 +rt/scan sensor_msgs::msg"));
  EXPECT_THAT(result.out, testing::ContainsRegex("\n/robot1/cmd_vel +geometry_msgs/msg/Twist +in"));
  EXPECT_THAT(result.out, testing::ContainsRegex("\n/tf_static +[^ ]+ +out +reliable, transient"));
}

TEST(Ros2Command, refusesInvalidOptionsWithTheReason) {
  const std::vector<BadInput> inputs = {
      {{"drive", "--kind", "1", "--path", "3,3 4,3", "--ros2-node", "me"}, "--ros2-node requires"},
      {{"serve", "--robot", "porter", "--ros-distro", "humble"},
       "--ros-distro requires --ros2 or --from-ros2"},
      {{"replay", "run.mcap", "--ros2-interface", "lo"},
       "--ros2-interface requires --ros2 or --from-ros2"},
      {{"ros2", "--list", "--robot", "porter", "--ros2-remap", "scan"},
       "--ros2-remap: FROM:=TO expected, \"scan\" given"},
      {{"ros2", "--list", "--robot", "porter", "--ros2-remap", "scn:=/scan"},
       "--ros2-remap: a topic of this robot expected, \"/scn\" given; ros2 --list shows them"},
      {{"ros2", "--list", "--robot", "porter", "--ros-distro", "humbel"},
       "--ros2: a distribution expected (humble, iron, jazzy, kilted, lyrical; rolling for later "
       "ones), \"humbel\" given"},
      {{"ros2", "--list", "--robot", "porter", "--ros2-interface", "nosuch"},
       "--ros2: a network interface of this machine expected, \"nosuch\" given"},
      {{"ros2", "--list", "--robot", "porter", "--ros2-namespace", "a b"},
       "--ros2: a namespace of letters, digits and _"},
      {{"ros2", "--list", "--robot", "porter", "--ros2-frame", "FrontLasr:=laser"},
       "--ros2: a frame of the robot expected (map, odom, base, a sensor or NAME_optical of a "
       "camera), \"FrontLasr\" given"},
      {{"serve", "--robot", "porter", "--speed", "0"},
       "--speed: a number from 0.1 to 100 or max expected, \"0\" given"}};
  for (const BadInput& input : inputs) {
    const bool needsGraph = input.arguments.front() == "ros2" && !hasGraph();
    expectRefused({input.arguments, needsGraph ? kNoGraph : input.expected});
  }
}

}  // namespace
}  // namespace QV::app
