#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

#include "ros2/messages/sensor_msgs.h"
#include "tests/ros2/link/robot_on_graph.h"
#include "tests/support/child_process.h"
#include "tests/support/vocabulary.h"

namespace QV::ros2 {
namespace {

/** Runs `qvsensors` on the test's graph, in a process of its own. */
void runOnGraph(test::ChildProcess& process, std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), QVSENSORS);
  std::vector<char*> argv;
  for (auto& argument : arguments) argv.push_back(argument.data());
  argv.push_back(nullptr);
  const std::string domain = std::to_string(test::aloneOn().domain);
  process.start([&] {
    setenv("ROS_DOMAIN_ID", domain.c_str(), 1);
    unsetenv("ROS_AUTOMATIC_DISCOVERY_RANGE");
    unsetenv("CYCLONEDDS_URI");
    dup2(open("/dev/null", O_WRONLY), STDOUT_FILENO);
    execv(QVSENSORS, argv.data());
  });
}

TEST(ServeOnGraph, anotherProcessReadsAndDrivesTheRobotUntilItEnds) {
  Graph graph(test::aloneOn());
  const auto tool = graph.createNode("tool");
  test::Watched<std::size_t> writers;
  Heard scans, odometry;
  const Qos last{true, false, 10};
  scans.subscription = tool->subscribe(
      "/robot1/FrontLaser/scan", sensor_msgs::LaserScan::getType(), last, scans.listener(),
      [&](std::size_t count) { writers.change([&](auto& now) { now = count; }); });
  odometry.subscription =
      tool->subscribe("/robot1/odom", nav_msgs::Odometry::getType(), last, odometry.listener());
  const auto velocities = tool->publish("/robot1/cmd_vel", geometry_msgs::Twist::getType());
  test::ChildProcess process;
  runOnGraph(process, {"serve", "--robot", "porter", "--port", "0", "--ros2", "--ros2-namespace",
                       "robot1", "--speed", "2"});
  ASSERT_TRUE(scans.messages.awaitThat([](const auto& list) { return !list.empty(); }));
  const std::size_t beams = scans.all<sensor_msgs::LaserScan>().front().ranges.size();
  EXPECT_EQ(beams, 15u);
  EXPECT_TRUE(odometry.messages.awaitThat([&](const auto& list) {
    velocities->write(geometry_msgs::Twist{{0.0, 0.0, 0.0}, {0.0, 0.0, 0.5}});
    return !list.empty() &&
           fromCdr<nav_msgs::Odometry>(list.back().cdr).twist.twist.angular.z == 0.5;
  }));
  process.signal(SIGINT);
  EXPECT_EQ(process.awaitEnd(), 128 + SIGINT);
  EXPECT_TRUE(writers.awaitThat([](std::size_t count) { return count == 0; }));
}

}  // namespace
}  // namespace QV::ros2
