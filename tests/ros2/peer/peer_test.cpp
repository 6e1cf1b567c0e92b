#include "tests/ros2/peer/peer.h"

#include <algorithm>
#include <map>
#include <set>
#include <tuple>

#include "tests/ros2/link/robot_on_graph.h"
#include "tests/ros2/peer/digest.h"
#include "tests/ros2/recording/recorded_session.h"
#include "tests/session/session_in_room.h"

namespace QV::ros2 {
namespace {

using Digests = std::map<std::string, std::set<std::uint64_t>>;

/** An engine may pad a message to whole words, and say so in its head or not. */
std::set<std::uint64_t> digestsOf(BytesView message) {
  std::set<std::uint64_t> digests;
  Bytes bytes(message.begin(), message.end());
  const auto add = [&] { digests.insert(test::digestOf(bytes.data(), bytes.size())); };
  add();
  const std::size_t padding = (4 - bytes.size() % 4) % 4;
  bytes.resize(bytes.size() + padding);
  add();
  bytes[3] = static_cast<std::uint8_t>(padding);
  add();
  return digests;
}

/** All messages of a robot's topics, heard beside their writer: none is lost on the way. */
class OwnReader {
 public:
  OwnReader(GraphNode& node, const std::vector<WireTopic>& topics) {
    for (const WireTopic& wire : topics) {
      if (wire.isInput) continue;
      const auto add = [this, name = wire.ddsName](const ReceivedMessage& message) {
        heard.change([&](Digests& all) { all[name].merge(digestsOf(message.cdr)); });
      };
      subscriptions.push_back(node.subscribe(wire.topic.name, *findMessageType(wire.topic.type),
                                             {true, wire.topic.qos.transientLocal, 1000}, add));
    }
  }
  // The subscriptions end before what they write to.
  ~OwnReader() { subscriptions.clear(); }

  /** Returns which of another reader's messages never came. */
  std::vector<std::string> findUnheard(const Digests& others) {
    heard.awaitThat([&](const Digests& all) { return xFindUnheard(all, others).empty(); });
    return xFindUnheard(heard.get(), others);
  }

 private:
  static std::vector<std::string> xFindUnheard(const Digests& all, const Digests& others) {
    std::vector<std::string> unheard;
    for (const auto& [topic, digests] : others) {
      const auto own = all.find(topic);
      for (const std::uint64_t digest : digests) {
        if (own == all.end() || own->second.count(digest) == 0) unheard.push_back(topic);
      }
    }
    return unheard;
  }

  test::Watched<Digests> heard;
  std::vector<std::unique_ptr<Subscription>> subscriptions;
};

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

std::set<std::string> outputsOf(const std::vector<WireTopic>& topics) {
  std::set<std::string> names;
  for (const WireTopic& wire : topics) {
    if (!wire.isInput) names.insert(wire.ddsName);
  }
  return names;
}

/** In a room, with people. */
session::OpenOptions peopledRoom() {
  auto world = test::busyWorld();
  world.map = test::makeRoom();
  world.start = Math::Pose2D(3.0f, 3.0f, 0.0f);
  return world;
}

struct PeerTest : testing::TestWithParam<bool> {
  /** Returns the topics of a robot on a graph that nobody sees. */
  static std::vector<WireTopic> topicsOf(session::Session& session) {
    GraphOptions options;
    options.range = DiscoveryRange::off;
    Graph graph(options);
    return GraphRobot(graph, session).getTopics();
  }
  const std::unique_ptr<session::Session> session = session::openVirtual("porter", peopledRoom());
  test::LogCapture log;
};

INSTANTIATE_TEST_SUITE_P(Starts, PeerTest, testing::Bool(),
                         [](const auto& is) { return is.param ? "PeerFirst" : "RobotFirst"; });

TEST_P(PeerTest, readsEveryTopicByteForByteAndDrives) {
  const auto topics = topicsOf(*session);
  const auto arguments = argumentsFor(topics);
  std::optional<Peer> peer;
  if (GetParam()) {
    peer.emplace(arguments);
    ASSERT_TRUE(peer->awaitReady());
  }
  RobotOnGraph sut(*session);
  const auto beside = sut.ours.createNode("beside");
  OwnReader own(*beside, topics);
  if (!peer) peer.emplace(arguments);
  auto missing = outputsOf(topics);
  const auto isMissing = [&](const std::string& part) {
    peer->dropHeard(missing);
    return std::ranges::any_of(missing,
                               [&](const auto& name) { return name.find(part) != name.npos; });
  };
  // A blind zone says nothing while the robot moves.
  const std::tuple<const char*, Math::Pose2D, Math::Pose2D> drives[] = {
      {"DepthCamera", {3.0f, 3.0f, 0.0f}, {0.0f, 0.0f, 0.5f}},
      {"Touch", {9.3f, 3.0f, 0.0f}, {0.4f, 0.0f, 0.0f}},
      {"BackBumper", {0.7f, 3.0f, 0.0f}, {-0.4f, 0.0f, 0.0f}},
      {"", {3.0f, 3.0f, 0.0f}, {}}};
  for (const auto& [part, from, velocity] : drives) {
    session->setPose(from);
    EXPECT_TRUE(sut.runUntil([&, part = part, velocity = velocity] {
      session->drive(velocity, boost::chrono::seconds(1));
      return !isMissing(part);
    })) << testing::PrintToString(missing);
  }
  peer->drive();
  EXPECT_TRUE(
      sut.runUntil([&] { return session->look().velocity == Math::Pose2D(0.25f, 0.0f, 0.125f); }));
  const auto said = peer->get();
  EXPECT_THAT(own.findUnheard(said.got), testing::IsEmpty());
  EXPECT_GT(said.seen.size(), topics.size());
  for (const auto& [topic, bytes] : said.seen) EXPECT_GT(bytes, 70) << topic;
}

}  // namespace
}  // namespace QV::ros2
