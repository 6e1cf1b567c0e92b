#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <functional>
#include <future>
#include <map>
#include <thread>

#include <gmock/gmock.h>

#include "ros2/link/graph_robot.h"
#include "ros2/link/heard_robot.h"
#include "ros2/messages/geometry_msgs.h"
#include "ros2/messages/scene_msgs.h"
#include "ros2/messages/sensor_msgs.h"
#include "sensor/real/real_sensor_manager.h"
#include "session/open.h"
#include "tests/ros2/network/cable.h"
#include "tests/support/child_process.h"
#include "tests/support/log_capture.h"

namespace QV::ros2 {
namespace {

using MachineClock = std::chrono::steady_clock;
using std::chrono::milliseconds;
using std::chrono::seconds;

/** Polls `reached` every 5 ms; returns false after `most` of real time. */
bool await(seconds most, const std::function<bool()>& reached) {
  const auto end = MachineClock::now() + most;
  while (!reached()) {
    if (MachineClock::now() > end) return false;
    std::this_thread::sleep_for(milliseconds(5));
  }
  return true;
}

GraphOptions inTheNetwork() {
  GraphOptions options;
  options.range = DiscoveryRange::subnet;
  return options;
}

/** Options with a liveliness lease of 2 s. */
GraphOptions missedSoon() {
  GraphOptions options = inTheNetwork();
  options.configuration =
      "<CycloneDDS><Domain><Discovery><LeaseDuration>2 s</LeaseDuration></Discovery></Domain>"
      "</CycloneDDS>";
  return options;
}

struct NetworkTest : testing::Test {
  void SetUp() override {
    if (!networks.isThere)
      GTEST_SKIP() << "skipped: networks of one's own may not be made here, or there is no ip";
  }
  const test::TwoNetworks networks;
  test::LogCapture log;
};

/** A robot whose scans say when they were made, by the wall clock. */
class WallClockRobot {
 public:
  explicit WallClockRobot(const GraphOptions& options) : graph(options) {
    frames->write(frameOfLaser());
  }
  ~WallClockRobot() {
    isOver = true;
    thread.join();
  }

  static std::int64_t now() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<milliseconds>(now).count();
  }

 private:
  static tf2_msgs::TFMessage frameOfLaser() {
    geometry_msgs::TransformStamped frame;
    frame.header.frame_id = "base_link";
    frame.child_frame_id = "laser";
    return {{frame}};
  }
  void xSpeak() {
    while (!isOver) {
      const std::int64_t time = now();
      const float code = 1.0f + 0.001f * static_cast<float>(time % 1000);
      sensor_msgs::LaserScan scan;
      scan.header = {{static_cast<std::int32_t>(time / 1000),
                      static_cast<std::uint32_t>(time % 1000 * 1'000'000)},
                     "laser"};
      scan.angle_min = -1.0f;
      scan.angle_max = scan.angle_increment = 1.0f;
      scan.range_min = 0.1f;
      scan.range_max = 5.0f;
      scan.ranges = {code, 1.5f, 4.0f - code};
      scans->write(scan);
      std::this_thread::sleep_for(milliseconds(20));
    }
  }

  Graph graph;
  const std::unique_ptr<GraphNode> node = graph.createNode("somebody");
  const std::unique_ptr<Publisher> frames =
      node->publish("/tf_static", tf2_msgs::TFMessage::getType(), {true, true, 1});
  const std::unique_ptr<Publisher> scans =
      node->publish("/scan", sensor_msgs::LaserScan::getType());
  std::atomic<bool> isOver{false};
  std::thread thread{[this] { xSpeak(); }};
};

/** A reader in the other network, with its present state. */
class Listener {
 public:
  explicit Listener(const test::Network& network) {
    HeardRobotOptions options;
    options.graph = inTheNetwork();
    options.usesSimTime = false;
    robot = network.run([&] { return std::make_unique<HeardRobot>(options); });
    manager = std::make_unique<sensor::RealSensorManager>(robot->getBroker());
    robot->obey(manager.get());
    manager->subscribe("test", "scan");
  }
  ~Listener() { robot->obey(nullptr); }

  /** The age of what there is; every time it is looked at, it must be what was measured then. */
  std::optional<ko::Duration> look() {
    const auto records = manager->getMetricalData("scan");
    if (records.empty() || records[0].points.size() != 3) return std::nullopt;
    const float code = Math::norm(records[0].points[0]);
    EXPECT_NEAR(Math::norm(records[0].points[2]), 4.0f - code, 1e-4f);
    EXPECT_GE(records[0].timestamp, last);
    if (records[0].timestamp > last) ++count;
    last = records[0].timestamp;
    const ko::Duration age = Math::age(records[0], ko::Clock::now());
    const auto made = static_cast<double>(WallClockRobot::now()) - 1e-6 * age.count();
    EXPECT_LT(std::abs(std::remainder(made - 1000.0 * (code - 1.0), 1000.0)), 100.0);
    return age;
  }

  /** The number of different measurements. */
  int count = 0;

 private:
  std::unique_ptr<HeardRobot> robot;
  std::unique_ptr<sensor::RealSensorManager> manager;
  ko::Clock::time_point last;
};

TEST_F(NetworkTest, onABadNetworkRecordsAreCorrectOrLate) {
  const auto robot =
      networks.robot.run([] { return std::make_unique<WallClockRobot>(inTheNetwork()); });
  networks.cable->beBad(true);
  Listener sut(networks.tool);
  ko::Duration oldest{0};
  ASSERT_TRUE(await(seconds(10), [&] { return sut.look().has_value(); }));
  EXPECT_TRUE(await(seconds(10), [&] {
    oldest = std::max(oldest, sut.look().value_or(ko::Duration::max()));
    return sut.count >= 20;
  }));
  EXPECT_LT(oldest, boost::chrono::seconds(1));
  EXPECT_GT(networks.cable->getLostCount(), 0);
  networks.cable->cut(true);
  EXPECT_TRUE(await(
      seconds(8), [&] { return sut.look().value_or(ko::Duration()) > boost::chrono::seconds(5); }));
  networks.cable->cut(false);
  EXPECT_TRUE(await(seconds(10), [&] {
    const auto now = sut.look();
    return now && *now < boost::chrono::milliseconds(500);
  }));
}

/** A virtual robot in one network. */
class ServedRobot {
 public:
  explicit ServedRobot(const test::Network& network)
      : graph(network.run([] { return std::make_unique<Graph>(inTheNetwork()); })) {}

  /** Goes on until it is so, at most for that time of the machine's. */
  bool runUntil(seconds most, const std::function<bool()>& reached) {
    return await(most, [&] {
      robot.obey();
      session->setDemand(robot.getDemand());
      session->run(boost::chrono::milliseconds(20));
      if (++steps % 5 == 0 && robot.isWatched()) robot.show(session->look());
      return reached();
    });
  }
  bool runs(const char* sensor) const { return session->getManager().isSensorStarted(sensor); }

 private:
  const std::unique_ptr<Graph> graph;
  const std::unique_ptr<session::Session> session = session::openVirtual("porter");
  GraphRobot robot{*graph, *session};
  int steps = 0;
};

/** A tool in the other network, and how many messages it got of each topic. */
class Tool {
 public:
  explicit Tool(const test::Network& network)
      : graph(network.run([] { return std::make_unique<Graph>(missedSoon()); })) {}

  template <typename Message>
  void listen(const std::string& topic, bool isKept = false) {
    auto& count = counts[topic];
    subscriptions.push_back(node->subscribe(topic, Message::getType(), {true, isKept, 10},
                                            [&count](const ReceivedMessage& message) {
                                              fromCdr<Message>(message.cdr);
                                              ++count;
                                            }));
  }
  void listenToAll() {
    listen<nav_msgs::OccupancyGrid>("/map", true);
    listen<std_msgs::String>("/robot_description", true);
    listen<tf2_msgs::TFMessage>("/tf_static", true);
    listen<sensor_msgs::LaserScan>("/FrontLaser/scan");
    listen<sensor_msgs::Image>("/DepthCamera/image");
  }
  bool hasAll() const {
    return std::ranges::all_of(counts, [](const auto& count) { return count.second > 0; });
  }
  int getCount(const std::string& topic) const { return counts.at(topic); }

 private:
  std::map<std::string, std::atomic<int>> counts;
  const std::unique_ptr<Graph> graph;
  const std::unique_ptr<GraphNode> node = graph->createNode("tool");
  std::vector<std::unique_ptr<Subscription>> subscriptions;
};

TEST_F(NetworkTest, aSensorStopsWhenItsReaderIsLostAndStartsWhenItReturns) {
  test::ChildProcess reader;
  reader.start([&] {
    Tool tool(networks.tool);
    tool.listen<sensor_msgs::LaserScan>("/FrontLaser/scan");
    pause();
  });
  ServedRobot sut(networks.robot);
  const auto runs = [&] { return sut.runs("FrontLaser"); };
  ASSERT_TRUE(sut.runUntil(seconds(10), runs));
  reader.signal(SIGKILL);
  EXPECT_TRUE(sut.runUntil(seconds(4), std::not_fn(runs)));
  Tool tool(networks.tool);
  tool.listen<sensor_msgs::LaserScan>("/FrontLaser/scan");
  int before = 0;
  const auto hears = [&] { return tool.getCount("/FrontLaser/scan") > before; };
  EXPECT_TRUE(sut.runUntil(seconds(10), hears));
  networks.cable->cut(true);
  EXPECT_TRUE(sut.runUntil(seconds(4), std::not_fn(runs)));
  before = tool.getCount("/FrontLaser/scan");
  networks.cable->cut(false);
  EXPECT_TRUE(sut.runUntil(seconds(10), runs));
  EXPECT_TRUE(sut.runUntil(seconds(10), hears));
}

TEST_F(NetworkTest, fifteenReadersThatJoinABadNetworkAtOnceGetEverything) {
  ServedRobot sut(networks.robot);
  networks.cable->beBad(true);
  std::vector<std::future<std::unique_ptr<Tool>>> joining;
  for (int i = 0; i < 15; ++i)
    joining.push_back(std::async(std::launch::async, [&] {
      auto tool = std::make_unique<Tool>(networks.tool);
      tool->listenToAll();
      return tool;
    }));
  std::vector<std::unique_ptr<Tool>> tools;
  for (auto& tool : joining) tools.push_back(tool.get());
  EXPECT_TRUE(sut.runUntil(seconds(60), [&] {
    return std::ranges::all_of(tools, [](const auto& tool) { return tool->hasAll(); });
  }));
  EXPECT_GT(networks.cable->getLostCount(), 10);
  tools.clear();
  EXPECT_TRUE(sut.runUntil(seconds(10),
                           [&] { return !sut.runs("FrontLaser") && !sut.runs("DepthCamera"); }));
}

}  // namespace
}  // namespace QV::ros2
