#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <optional>
#include <set>
#include <thread>
#include <unistd.h>

#include "ros2/link/heard_robot.h"
#include "ros2/messages/sensor_msgs.h"
#include "ros2/recording/session_replay.h"
#include "tests/ros2/link/robot_on_graph.h"
#include "tests/ros2/link/same_records.h"
#include "tests/support/child_process.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/vocabulary.h"

namespace QV::ros2 {
namespace {

using testing::HasSubstr;

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

/** The names of a program's threads. */
std::set<std::string> threadsOf(const test::ChildProcess& process) {
  const std::filesystem::path tasks = "/proc/" + std::to_string(process.getId()) + "/task";
  std::set<std::string> names;
  for (const auto& task : std::filesystem::directory_iterator(tasks))
    names.insert(test::readBytes(task.path() / "comm"));
  return names;
}

std::set<std::string> socketsOf(const std::string& process) {
  std::set<std::string> sockets;
  for (const auto& file : std::filesystem::directory_iterator("/proc/" + process + "/fd")) {
    std::error_code gone;
    const std::string target = std::filesystem::read_symlink(file, gone).string();
    if (target.starts_with("socket:")) sockets.insert(target);
  }
  return sockets;
}

/** Those of this test, which it has inherited, are not counted. */
std::size_t countSocketsOf(const test::ChildProcess& process) {
  auto sockets = socketsOf(std::to_string(process.getId()));
  for (const std::string& own : socketsOf("self")) sockets.erase(own);
  return sockets.size();
}

TEST_F(ServeOnGraph, onlyWhoAsksForItHasThreadsAndSocketsOfIt) {
  const std::set<std::string> threads = {"recv\n", "recvUC\n", "tev\n", "gc\n", "dq.builtins\n"};
  const auto countThreads = [&](const test::ChildProcess& of) {
    const auto names = threadsOf(of);
    return std::ranges::count_if(names, [&](const auto& name) { return threads.count(name) > 0; });
  };
  start({"serve", "--robot", "porter", "--port", "0"});
  EXPECT_EQ(countThreads(*process), 5);
  EXPECT_GT(countSocketsOf(*process), 2u);
  expectItsEnd();
  // The graph is joined before the recording begins.
  const test::TemporaryFolder folder;
  test::ChildProcess plain;
  runOnGraph(plain, {"serve", "--robot", "porter", "--port", "0", "--record", folder / "run.mcap"});
  while (!std::filesystem::exists(folder / "run.mcap") && !plain.hasEnded())
    std::this_thread::yield();
  EXPECT_EQ(countThreads(plain), 0);
  EXPECT_LE(countSocketsOf(plain), 1u);
}

/** All records that the library makes of a recording. */
RecordsBySensor recordsIn(const std::string& path, Math::Pose2D& end) {
  SessionReplay replay(path);
  replay.begin();
  RecordsBySensor records;
  while (replay.getSession().step()) add(records, session::recordsOf(replay.look()));
  end = replay.getSession().getPose();
  return records;
}

// The served robot's own records are those of its recording. It is slow, so that each of them is in
// a snapshot.
TEST(RoundTripOfProcesses, aRobotDrivenFromAnotherProcessHasTheSameRecordsThere) {
  const test::TemporaryFolder folder;
  const test::LogCapture log;
  test::ChildProcess served;
  runOnGraph(served, {"serve", "--robot", "porter", "--port", "0", "--speed", "0.5", "--people",
                      "60", "--pose", "3,6.3,0", "--ros2", "--ros2-frame=base:=base_link",
                      "--ros2-frame=map:=world", "--ros2-frame-prefix=robot1/", "--record",
                      folder / "run.mcap"});
  HeardRobotOptions options;
  options.graph = test::aloneOn();
  options.usesSimTime = true;
  auto session = openHeardRobot(options);
  session->subscribe("test", session->getManager().getFamilyNames());
  RecordsBySensor read;
  const auto runUntil = [&](const std::function<bool()>& reached) {
    for (int i = 0; i < 1500 && !reached(); ++i) {
      session->run(boost::chrono::milliseconds(20));
      add(read, session::recordsOf(session->look()));
    }
    return reached();
  };
  session->drive({0.0f, 0.0f, 0.5f}, boost::chrono::seconds(60));
  EXPECT_TRUE(runUntil([&] {
    return hasPoints(read, "PeoplePerception") && hasPoints(read, "DepthCamera") &&
           session->getPose().theta > 1.0f;
  }));
  session->drive({0.5f, 0.0f, 0.0f}, boost::chrono::seconds(60));
  EXPECT_TRUE(runUntil([&] { return hasPoints(read, "FrontBumper"); }));
  session->stop();
  const auto stopped = session->look().time + boost::chrono::seconds(1);
  EXPECT_TRUE(runUntil([&] { return session->look().time > stopped; }));
  const Math::Pose2D heardAt = session->getPose();
  session.reset();
  served.signal(SIGINT);
  EXPECT_EQ(served.awaitEnd(), 128 + SIGINT);
  Math::Pose2D servedAt;
  const auto told = recordsIn(folder / "run.mcap", servedAt);
  EXPECT_GE(read.size(), 11u);
  // Their times have different beginnings.
  expectSameRecords(told, read, boost::chrono::hours(1));
  EXPECT_NEAR(heardAt.x, servedAt.x, 1e-4f);
  EXPECT_NEAR(heardAt.y, servedAt.y, 1e-4f);
  EXPECT_NEAR(heardAt.theta, servedAt.theta, 1e-4f);
  EXPECT_THAT(log.lines(ko::log::Level::warning),
              testing::Each(testing::Not(testing::AnyOf(HasSubstr("refused"), HasSubstr("pose")))));
}

}  // namespace
}  // namespace QV::ros2
