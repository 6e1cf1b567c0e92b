#include <cmath>
#include <memory>
#include <optional>
#include <vector>

#include "ros2/graph/graph.h"
#include "ros2/messages/scene_msgs.h"
#include "tests/ros2/peer/peer.h"

namespace QV::ros2 {
namespace {

const std_msgs::Header kAtMap{{12, 345'678'901}, "map"};

std_msgs::Header at(const char* frame) {
  return {kAtMap.stamp, frame};
}

geometry_msgs::PoseWithCovariance posed(const geometry_msgs::Pose& pose) {
  geometry_msgs::PoseWithCovariance result{pose, {}};
  result.covariance[0] = 0.25;
  result.covariance[35] = 0.5;
  return result;
}

const geometry_msgs::Quaternion kLeft{0.0, 0.0, 0.6, 0.8};

geometry_msgs::TransformStamped frame(const char* parent, const char* child,
                                      const geometry_msgs::Transform& transform) {
  return {at(parent), child, transform};
}

sensor_msgs::LaserScan scan() {
  sensor_msgs::LaserScan scan;
  scan.header = at("laser");
  scan.angle_min = -1.5f;
  scan.angle_max = scan.angle_increment = 1.5f;
  scan.time_increment = 0.001f;
  scan.scan_time = 0.1f;
  scan.range_min = 0.05f;
  scan.range_max = 12.0f;
  scan.ranges = {1.0f, 2.5f, HUGE_VALF};
  scan.intensities = {7.0f};
  return scan;
}

sensor_msgs::CameraInfo info() {
  sensor_msgs::CameraInfo info;
  info.header = at("camera");
  info.height = info.width = 2;
  info.distortion_model = "plumb_bob";
  info.d = {0.1, 0.2};
  info.k[0] = 500.0;
  info.r[0] = 1.0;
  info.p[0] = 501.0;
  info.binning_x = 1;
  info.binning_y = 2;
  info.roi = {0, 1, 2, 1, true};
  return info;
}

nav_msgs::Odometry odometry() {
  nav_msgs::Odometry odometry{at("odom"), "base", posed({{1.0, 2.0, 0.0}, kLeft}), {}};
  odometry.twist.twist = {{0.5, 0.0, 0.0}, {0.0, 0.0, 0.25}};
  odometry.twist.covariance = odometry.pose.covariance;
  return odometry;
}

vision_msgs::Detection3DArray people() {
  const geometry_msgs::Pose pose{{1.0, 2.0, 0.5}, {0.0, 0.0, 0.0, 1.0}};
  vision_msgs::Detection3D person;
  person.header = at("camera");
  person.results = {{{"person", 0.75}, posed(pose)}};
  person.bbox = {pose, {0.5, 0.5, 1.75}};
  person.id = "7";
  return {at("camera"), {person}};
}

nav_msgs::OccupancyGrid map() {
  nav_msgs::OccupancyGrid map;
  map.header = kAtMap;
  map.info = {kAtMap.stamp, 0.05f, 2, 2, {{-1.0, -2.0, 0.0}, {}}};
  map.data = {0, 100, -1, 50};
  return map;
}

struct Check {
  virtual ~Check() = default;
  virtual void check() = 0;
};

/** A topic of the peer's, heard by a reader of ours. */
template <typename Message>
class Input : public Check {
 public:
  Input(GraphNode& node, const std::string& topic, const Message& expected, bool isKept)
      : expected(expected),
        subscription(node.subscribe(
            topic, Message::getType(), {isKept, isKept, 1}, [this](const ReceivedMessage& message) {
              heard.change(
                  [&](auto& last) { last.assign(message.cdr.begin(), message.cdr.end()); });
            })) {}
  // The subscription ends before the members that it writes to.
  ~Input() override { subscription.reset(); }

  void check() override {
    const std::string& topic = subscription->getTopic().name;
    ASSERT_TRUE(heard.awaitThat([](const Bytes& last) { return !last.empty(); })) << topic;
    EXPECT_TRUE(fromCdr<Message>(heard.get()) == expected) << topic;
  }

 private:
  test::Watched<Bytes> heard;
  const Message expected;
  std::unique_ptr<Subscription> subscription;
};

/** All that a robot hears of others. */
std::vector<std::unique_ptr<Check>> listenToAll(GraphNode& node) {
  std::vector<std::unique_ptr<Check>> all;
  const auto hear = [&](const std::string& topic, const auto& expected, bool isKept = false) {
    using Message = std::decay_t<decltype(expected)>;
    all.push_back(std::make_unique<Input<Message>>(node, topic, expected, isKept));
  };
  const std::vector<std::uint8_t> pixels = {1, 2, 3, 4, 5, 6, 7, 8};
  hear("/cmd_vel", geometry_msgs::Twist{{0.5, 0.25, 0.125}, {1.5, 2.5, -3.5}});
  hear("/cmd_vel", geometry_msgs::TwistStamped{at("base"), {{-0.5, 0.25, 0.125}, {1.5, 2.5, 3.5}}});
  hear("/initialpose",
       geometry_msgs::PoseWithCovarianceStamped{kAtMap, posed({{1.0, 2.0, 0.5}, kLeft})});
  hear("/goal_pose", geometry_msgs::PoseStamped{kAtMap, {{3.0, -4.0, 0.0}, {0.0, 0.0, -0.6, 0.8}}});
  hear("/scan", scan());
  hear("/sonar", sensor_msgs::Range{at("sonar"), 1, 0.5f, 0.2f, 4.0f, 1.25f, 0.01f});
  hear("/image", sensor_msgs::Image{at("camera"), 2, 2, "16UC1", 0, 4, pixels});
  hear("/camera_info", info());
  hear("/cloud",
       sensor_msgs::PointCloud2{
           at("laser"), 1, 2, {{"x", 0, 7, 1}, {"intensity", 4, 2, 1}}, false, 4, 8, pixels, true});
  hear("/tf",
       tf2_msgs::TFMessage{{frame("odom", "base", {{1.0, 2.0, 3.0}, kLeft}),
                            frame("base", "laser", {{0.1, 0.2, 0.3}, {0.0, 0.0, 0.0, 1.0}})}});
  hear("/tf_static",
       tf2_msgs::TFMessage{{frame("base", "sonar", {{0.5, 0.0, 0.25}, {1.0, 0.0, 0.0, 0.0}})}},
       true);
  hear("/odom", odometry());
  hear("/joint_states", sensor_msgs::JointState{at(""), {"lift", "wheel"}, {0.5, 1.5}, {0.25}, {}});
  hear("/people", people());
  hear("/map", map(), true);
  hear("/robot_description", std_msgs::String{"<robot name=\"\xc3\xa9\"/>"}, true);
  hear("/clock", rosgraph_msgs::Clock{kAtMap.stamp});
  return all;
}

class PeerInputs : public testing::TestWithParam<bool> {};

INSTANTIATE_TEST_SUITE_P(Starts, PeerInputs, testing::Bool(),
                         [](const auto& is) { return is.param ? "PeerFirst" : "ReaderFirst"; });

// Messages of other robots and tools arrive with all their values.
TEST_P(PeerInputs, inputsOfAPeerAreReadValueByValue) {
  std::optional<Peer> peer;
  if (GetParam()) {
    peer.emplace(std::vector<std::string>());
    ASSERT_TRUE(peer->awaitReady());
  }
  Graph graph(test::aloneOn());
  const auto node = graph.createNode("robot");
  const auto heard = listenToAll(*node);
  if (!peer) peer.emplace(std::vector<std::string>());
  for (const auto& topic : heard) topic->check();
}

}  // namespace
}  // namespace QV::ros2
