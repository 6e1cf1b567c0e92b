#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <map>
#include <optional>
#include <unistd.h>

#include "ros2/link/heard_robot.h"
#include "ros2/messages/sensor_msgs.h"
#include "ros2/recording/session_replay.h"
#include "tests/ros2/link/robot_on_graph.h"
#include "tests/support/child_process.h"
#include "tests/support/temporary_folder.h"
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

/** A program on the graph of the test, and what is heard of its robot. */
struct ServeOnGraph : testing::Test {
  ServeOnGraph() {
    scans.subscription = tool->subscribe(
        "/robot1/FrontLaser/scan", sensor_msgs::LaserScan::getType(), kLast, scans.listener(),
        [&](std::size_t count) { writers.change([&](auto& now) { now = count; }); });
  }

  void start(std::vector<std::string> arguments) {
    arguments.insert(arguments.end(), {"--ros2", "--ros2-namespace", "robot1"});
    process.emplace();
    runOnGraph(*process, std::move(arguments));
    EXPECT_TRUE(scans.messages.awaitThat([](const auto& list) { return !list.empty(); }));
  }
  void expectItsEnd() {
    process->signal(SIGINT);
    EXPECT_EQ(process->awaitEnd(), 128 + SIGINT);
    EXPECT_TRUE(writers.awaitThat([](std::size_t count) { return count == 0; }));
  }

  static constexpr Qos kLast{true, false, 10};
  Graph graph{test::aloneOn()};
  const std::unique_ptr<GraphNode> tool = graph.createNode("tool");
  test::Watched<std::size_t> writers;
  Heard scans;
  std::optional<test::ChildProcess> process;
};

TEST_F(ServeOnGraph, anotherProcessReadsAndDrivesTheRobotUntilItEnds) {
  Heard odometry;
  odometry.subscription =
      tool->subscribe("/robot1/odom", nav_msgs::Odometry::getType(), kLast, odometry.listener());
  const auto velocities = tool->publish("/robot1/cmd_vel", geometry_msgs::Twist::getType());
  start({"serve", "--robot", "porter", "--port", "0", "--speed", "2"});
  EXPECT_EQ(scans.all<sensor_msgs::LaserScan>().at(0).ranges.size(), 15u);
  EXPECT_TRUE(odometry.messages.awaitThat([&](const auto& list) {
    velocities->write(geometry_msgs::Twist{{0.0, 0.0, 0.0}, {0.0, 0.0, 0.5}});
    return !list.empty() &&
           fromCdr<nav_msgs::Odometry>(list.back().cdr).twist.twist.angular.z == 0.5;
  }));
  expectItsEnd();
}

TEST_F(ServeOnGraph, aDriveAndAReplayAreRobotsToo) {
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{"drive", "--robot", "porter", "--path", "3,6.3 6,6.3"},
        std::vector<std::string>{"replay", "run.mcap", "--loop"}}) {
    scans.messages.change([](auto& list) { list.clear(); });
    start(arguments);
    expectItsEnd();
  }
}

std::map<std::string, Math::MetricalData> lastRecordsOf(const session::Snapshot& snapshot) {
  std::map<std::string, Math::MetricalData> records;
  for (auto& record : session::recordsOf(snapshot)) records[record.sensorName] = record;
  return records;
}

float farthestOf(const Math::MetricalData& a, const Math::MetricalData& b) {
  if (a.points.size() != b.points.size()) return INFINITY;
  float farthest = 0.0f;
  for (std::size_t i = 0; i < a.points.size(); ++i) {
    const auto &p = a.points[i], &q = b.points[i];
    farthest = std::max({farthest, std::abs(p.x - q.x), std::abs(p.y - q.y), std::abs(p.z - q.z)});
  }
  return farthest;
}

// The served robot's own records are those of its recording.
TEST(RoundTripOfProcesses, aRobotDrivenFromAnotherProcessHasTheSameRecordsThere) {
  const test::TemporaryFolder folder;
  const test::LogCapture log;
  test::ChildProcess served;
  runOnGraph(served, {"serve", "--robot", "porter", "--port", "0", "--speed", "4", "--ros2",
                      "--record", folder / "run.mcap"});
  HeardRobotOptions options;
  options.graph = test::aloneOn();
  options.usesSimTime = true;
  auto session = openHeardRobot(options);
  session->subscribe("test", session->getManager().getFamilyNames());
  const Math::Pose2D start = session->getPose();
  session->drive({0.2f, 0.0f, 0.5f}, boost::chrono::seconds(2));
  session->run(boost::chrono::seconds(2));
  session->stop();
  session->run(boost::chrono::seconds(3));
  EXPECT_GT(std::abs(session->getPose().theta - start.theta), 0.3f);
  const auto read = lastRecordsOf(session->look());
  session.reset();
  served.signal(SIGINT);
  EXPECT_EQ(served.awaitEnd(), 128 + SIGINT);
  SessionReplay replay(folder / "run.mcap");
  replay.begin();
  while (replay.getSession().step()) continue;
  const auto told = lastRecordsOf(replay.look());
  EXPECT_GE(read.size(), 9u);
  for (const auto& [sensor, record] : read)
    EXPECT_LT(farthestOf(record, told.at(sensor)), 1e-6f) << sensor;
}

}  // namespace
}  // namespace QV::ros2
