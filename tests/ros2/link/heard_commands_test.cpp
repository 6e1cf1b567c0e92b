#include <atomic>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <thread>

#include <gmock/gmock.h>

#include "apps/ros2/graph_words.h"
#include "ros2/link/heard_robot.h"
#include "tests/apps/run_program.h"
#include "tests/ros2/link/ticking_robot.h"
#include "tests/ros2/player/bag_player.h"
#include "tests/support/real_data.h"
#include "tests/support/temporary_folder.h"

namespace QV::ros2 {
namespace {

using app::run;
using testing::HasSubstr;

/** Plays a recording on a graph, faster than it was, until it ends. */
class Playing {
 public:
  explicit Playing(const std::string& path) : player(path, *node) {}
  ~Playing() {
    {
      const std::lock_guard lock(mutex);
      ended = true;
    }
    changed.notify_all();
    thread.join();
  }

  std::size_t countReaders(const std::string& topic) const { return player.countReaders(topic); }

 private:
  void play() {
    std::unique_lock lock(mutex);
    while (!ended) {
      player.playNext();
      changed.wait_for(lock, std::chrono::milliseconds(4), [this] { return ended; });
    }
  }

  Graph graph{test::aloneOn()};
  const std::unique_ptr<GraphNode> node = graph.createNode("player");
  test::BagPlayer player;
  std::mutex mutex;
  std::condition_variable changed;
  bool ended = false;
  std::thread thread{[this] { play(); }};
};

/** The ranges of a scan that mean something, in their order. */
std::vector<float> echoesOf(const sensor_msgs::LaserScan& scan) {
  std::vector<float> echoes;
  for (const float range : scan.ranges)
    if (range >= scan.range_min && range < scan.range_max) echoes.push_back(range);
  return echoes;
}

/** Returns the ranges of all scans; each file has one scan topic. */
std::vector<std::vector<float>> echoesIn(const std::string& path) {
  BagReader bag(path);
  std::vector<std::vector<float>> echoes;
  while (const auto message = bag.next())
    if (message->topic->type == sensor_msgs::LaserScan::getType().getName())
      echoes.push_back(echoesOf(fromCdr<sensor_msgs::LaserScan>(message->data)));
  return echoes;
}

/** Returns a folder's recordings that have sensor topics. */
std::vector<std::string> recordingsIn(const std::string& folder) {
  std::vector<std::string> paths;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    const auto& path = entry.path();
    if (path.extension() != ".mcap" && path.extension() != ".db3") continue;
    const BagReader bag(path.string());
    if (std::ranges::any_of(bag.getTopics(), [](const BagTopic* topic) {
          return topic->encoding == "cdr" &&
                 (topic->type == sensor_msgs::LaserScan::getType().getName() ||
                  topic->type == sensor_msgs::PointCloud2::getType().getName());
        }))
      paths.push_back(path.string());
  }
  return paths;
}

bool isOf(const Math::MetricalData& record, const std::vector<float>& echoes) {
  return std::ranges::equal(record.points, echoes, [](const auto& point, float range) {
    return std::abs(Math::norm(point) - range) < 1e-4f;
  });
}

struct HeardCommandsTest : testing::Test {
  HeardCommandsTest() {
    const std::string domain = std::to_string(test::aloneOn().domain);
    ::setenv("ROS_DOMAIN_ID", domain.c_str(), 1);
    if (const auto data = test::findRealData("bags/mumble_straight.mcap")) path = *data;
  }

  std::string path;
  const test::TemporaryFolder folder;
};

// Nothing is compared of a cloud but that it gives points.
TEST_F(HeardCommandsTest, realRecordingsAreReadScanByScan) {
  const auto bags = test::findRealData("bags");
  if (!bags) GTEST_SKIP() << "no recordings at QV_DATA";
  const auto paths = recordingsIn(*bags);
  EXPECT_GE(paths.size(), 8u);
  for (const std::string& path : paths) {
    SCOPED_TRACE(path);
    const auto echoes = echoesIn(path);
    const Playing playing(path);
    HeardRobotOptions options;
    options.graph = test::aloneOn();
    // One of the files has no times.
    if (echoes.empty()) options.usesSimTime = false;
    const auto session = openHeardRobot(options);
    session->subscribe("test", session->getManager().getFamilyNames());
    std::set<ko::Clock::time_point> seen;
    const std::size_t enough = echoes.empty() ? 3 : 20;
    for (int i = 0; i < 300 && seen.size() < enough; ++i) {
      session->run(boost::chrono::milliseconds(100));
      for (const auto& record : session::recordsOf(session->look())) {
        if (record.points.empty() || !(echoes.empty() || record.sensorName.ends_with("scan")))
          continue;
        seen.insert(record.timestamp);
        if (echoes.empty()) continue;
        EXPECT_TRUE(std::ranges::any_of(echoes, [&](const auto& of) { return isOf(record, of); }));
      }
    }
    EXPECT_GE(seen.size(), enough);
  }
}

TEST_F(HeardCommandsTest, listsSavesAndReadsARobotOnTheGraph) {
  if (path.empty()) GTEST_SKIP() << "no recordings at QV_DATA";
  const Playing playing(path);
  const std::string saved = folder / "mumble.urdf";
  const auto listed = run({"list", "--from-ros2", "--save", saved});
  EXPECT_EQ(listed.status, 0) << listed.error;
  EXPECT_THAT(listed.out, HasSubstr("Laser   scan"));
  app::expectRefused({{"list", "--from-ros2", "--from-remap", "/scn:=/scan"},
                      "/tf_static), \"/scn\" given, listening on"});
  const auto driven = run({"drive", "--from-ros2", "--path", "0,0 0.1,0"});
  EXPECT_THAT(driven.error, HasSubstr("/cmd_vel: nobody subscribes to it"));
  EXPECT_THAT(driven.error, HasSubstr("or it does not obey /cmd_vel"));
  for (const std::vector<std::string>& robot : {std::vector<std::string>{}, {"--robot", saved}}) {
    std::vector<std::string> arguments = {"read", "--from-ros2", "--format", "jsonl"};
    arguments.insert(arguments.end(), robot.begin(), robot.end());
    const auto read = run(arguments);
    EXPECT_EQ(read.status, 0) << read.error;
    const auto records = app::recordsIn(read.out);
    ASSERT_EQ(records.size(), 1u) << read.out << read.error;
    EXPECT_EQ(records[0]["sensorName"], "scan");
    EXPECT_GT(records[0]["points"].size(), 100u);
  }
}

TEST(GraphWords, sayWhoIsToldOfTheRobot) {
  using Change = std::function<void(GraphOptions&)>;
  const std::string here =
      "announced on this machine only (ROS_AUTOMATIC_DISCOVERY_RANGE=SUBNET without "
      "ROS_LOCALHOST_ONLY: in the network)";
  const std::pair<Change, std::string> cases[] = {
      {[](auto&) {}, here},
      {[](auto& options) { options.peers = {"10.0.0.2"}; },
       "announced on this machine and to ROS_STATIC_PEERS"},
      {[](auto& options) { options.range = DiscoveryRange::subnet; }, "visible in the network"},
      {[](auto& options) { options.range = DiscoveryRange::off; },
       "seen by nobody (ROS_AUTOMATIC_DISCOVERY_RANGE=OFF)"},
      {[](auto& options) { options.configuration = "file:///robot.xml"; },
       "visible as CYCLONEDDS_URI says"},
      {[](auto& options) {
         options.range = DiscoveryRange::off;
         options.configuration = "file:///robot.xml";
       },
       "seen by nobody (ROS_AUTOMATIC_DISCOVERY_RANGE=OFF), unless CYCLONEDDS_URI says "
       "otherwise"},
      {[](auto& options) { app::setGraph(options, {"humble"}); },
       here + ", message layout: Humble and older"},
      {[](auto& options) { app::setGraph(options, {"none"}); },
       here + ", message layout: Iron and newer, no node announced"}};
  for (const auto& [change, expected] : cases) {
    GraphOptions options;
    change(options);
    const bool namesLayout = expected.find("layout") != std::string::npos;
    EXPECT_EQ(
        app::describeGraph(options),
        "ROS 2 domain 0, " + expected + (namesLayout ? "" : ", message layout: Iron and newer"));
  }
}

TEST_F(HeardCommandsTest, refusesAnEmptyGraphWithAMessage) {
  app::expectRefused({{"read", "--from-ros2"}, "--from-ros2: on the graph a topic of LaserScan"});
  app::expectRefused({{"list", "--from-ros2", "--use-sim-time"}, "--from-ros2: somebody expected"});
  app::expectRefused({{"list", "--from-ros2", "--from-remap", "a"}, "--from-remap: FROM:=TO"});
  app::expectRefused(
      {{"read", "--from-ros2", "--ros-distro", "humble"}, "layout: Humble and older"});
  app::expectRefused({{"read", "--from-ros2", "--ros2-interface", "nosuch"},
                      "--from-ros2: a network interface of this machine expected, \"nosuch\""});
}

}  // namespace
}  // namespace QV::ros2
