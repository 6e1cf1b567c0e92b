#include "tests/ros2/peer/peer.h"

#include <map>
#include <set>

#include "ros2/bag/bag_reader.h"
#include "ros2/recording/session_recorder.h"
#include "tests/ros2/link/robot_on_graph.h"
#include "tests/ros2/peer/digest.h"
#include "tests/ros2/recording/recorded_session.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/vocabulary.h"

namespace QV::ros2 {
namespace {

std::map<std::string, std::set<std::uint64_t>> digestsIn(const std::string& path) {
  std::map<std::string, std::set<std::uint64_t>> digests;
  BagReader reader(path);
  while (const auto message = reader.next()) {
    // An engine may pad a message to whole words, and say so in its head or not.
    Bytes bytes(message->data.begin(), message->data.end());
    const std::size_t padding = (4 - bytes.size() % 4) % 4;
    auto& all = digests["rt" + message->topic->name];
    all.insert(test::digestOf(bytes.data(), bytes.size()));
    for (std::size_t i = 0; i < padding; ++i) bytes.push_back(0);
    all.insert(test::digestOf(bytes.data(), bytes.size()));
    bytes[3] = static_cast<std::uint8_t>(padding);
    all.insert(test::digestOf(bytes.data(), bytes.size()));
  }
  return digests;
}

/** The topics on which something always goes out that a recording has, too. */
const std::set<std::string> kCompared = {"rt/tf_static",
                                         "rt/odom",
                                         "rt/map",
                                         "rt/robot_description",
                                         "rt/people",
                                         "rt/FrontLaser/scan",
                                         "rt/LeftLaser/scan",
                                         "rt/RightLaser/scan",
                                         "rt/ShovelLaser/scan",
                                         "rt/HoleLaser/scan",
                                         "rt/FrontSonar/range",
                                         "rt/BackSonar/range",
                                         "rt/BlindZone/contact",
                                         "rt/DepthCamera/image",
                                         "rt/DepthCamera/camera_info",
                                         "rt/FrontLaser/points"};

/** Returns the others of a robot that nothing touches. A recording has all points of a camera as
 * pixels of its image, and tells the rest at times of its own. */
std::set<std::string> othersOf(const std::vector<WireTopic>& topics) {
  std::set<std::string> names;
  for (const WireTopic& wire : topics) {
    const std::string& name = wire.ddsName;
    const bool isOfTouches = name.find("Bumper/") != name.npos || name.starts_with("rt/Touch/");
    if (!wire.isInput && !isOfTouches && kCompared.count(name) == 0) names.insert(name);
  }
  return names;
}

/** Returns the arguments of a peer that drives and reads all topics of a robot. */
std::vector<std::string> argumentsFor(const std::vector<WireTopic>& topics) {
  std::vector<std::string> arguments = {"0.25", "0.125"};
  for (const WireTopic& wire : topics) {
    if (wire.isInput) continue;
    arguments.insert(arguments.end(),
                     {wire.ddsName, wire.ddsType, wire.topic.qos.transientLocal ? "1" : "0"});
  }
  return arguments;
}

struct PeerTest : testing::TestWithParam<bool> {
  /** Returns the topics of a robot on a graph that nobody sees. */
  static std::vector<WireTopic> topicsOf(session::Session& session) {
    GraphOptions options;
    options.range = DiscoveryRange::off;
    Graph graph(options);
    return GraphRobot(graph, session).getTopics();
  }
  const std::unique_ptr<session::Session> session =
      session::openVirtual("porter", test::busyWorld());
  const test::TemporaryFolder folder;
  test::LogCapture log;
};

INSTANTIATE_TEST_SUITE_P(Starts, PeerTest, testing::Bool(),
                         [](const auto& is) { return is.param ? "PeerFirst" : "RobotFirst"; });

TEST_P(PeerTest, readsEveryTopicAndDrives) {
  const auto topics = topicsOf(*session);
  const auto arguments = argumentsFor(topics);
  std::optional<Peer> peer;
  if (GetParam()) {
    peer.emplace(arguments);
    ASSERT_TRUE(peer->awaitReady());
  }
  SessionRecorder recorder(folder / "run.mcap", *session);
  GraphRobotOptions options;
  options.noEchoIsInfinite = true;
  RobotOnGraph sut(*session, options);
  if (!peer) peer.emplace(arguments);
  std::set<std::string> missing = othersOf(topics);
  missing.insert(kCompared.begin(), kCompared.end());
  const auto recordUntil = [&](const std::function<bool()>& isSo) {
    return sut.runUntil([&] {
      recorder.show(session->look());
      return isSo();
    });
  };
  EXPECT_TRUE(recordUntil([&] {
    const auto got = peer->get().got;
    std::erase_if(missing, [&](const auto& name) { return got.count(name) > 0; });
    return missing.empty();
  })) << testing::PrintToString(missing);
  // A blind zone says nothing while the robot moves.
  peer->drive();
  EXPECT_TRUE(
      recordUntil([&] { return session->look().velocity == Math::Pose2D(0.25f, 0.0f, 0.125f); }));
  recorder.finish();
  const auto said = peer->get();
  const auto recorded = digestsIn(folder / "run.mcap");
  for (const std::string& name : kCompared) {
    EXPECT_TRUE(said.got.count(name) > 0) << name;
    if (said.got.count(name) == 0) continue;
    for (const std::uint64_t digest : said.got.at(name))
      EXPECT_EQ(recorded.at(name).count(digest), 1u) << name;
  }
  EXPECT_GT(said.seen.size(), topics.size());
  for (const auto& [topic, bytes] : said.seen) EXPECT_GT(bytes, 70) << topic;
}

}  // namespace
}  // namespace QV::ros2
