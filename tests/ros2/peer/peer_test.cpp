#include "tests/ros2/peer/peer.h"

#include <set>

#include "tests/ros2/link/robot_on_graph.h"
#include "tests/ros2/peer/written_messages.h"
#include "tests/ros2/recording/recorded_session.h"
#include "tests/session/session_in_room.h"

namespace QV::ros2 {
namespace {

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
  for (const WireTopic& wire : topics)
    if (!wire.isInput) names.insert(wire.ddsName);
  return names;
}

/** A room with people, and somebody ahead. */
session::OpenOptions peopledRoom() {
  auto world = test::busyWorld();
  world.map = test::makeRoom();
  world.start = Math::Pose2D(3.0f, 3.0f, 0.0f);
  return world;
}

struct PeerTest : testing::TestWithParam<bool> {
  PeerTest() {
    // A robot on a graph that nobody sees.
    GraphOptions options;
    options.range = DiscoveryRange::off;
    Graph graph(options);
    topics = GraphRobot(graph, *session).getTopics();
  }

  /** Runs no faster than the peer reads: Fast DDS reads freed memory when a message that it has in
   * part is dropped. */
  bool runUntil(RobotOnGraph& robot, const std::function<bool()>& reached) {
    bool isReached = false;
    robot.runUntil([&] {
      if (!peer->awaitLast(test::getWritten())) return true;
      return isReached = reached();
    });
    return isReached;
  }
  /** Until the peer has got all of these; `meddle` is called every half second of the session. */
  void runUntilGot(RobotOnGraph& robot, std::set<std::string> names,
                   const std::function<void(int)>& meddle) {
    constexpr int kSteps = 25;
    int steps = 0;
    EXPECT_TRUE(runUntil(robot, [&] {
      if (steps++ % kSteps == 0) meddle(steps / kSteps);
      peer->dropGot(names);
      return names.empty();
    })) << testing::PrintToString(names);
  }

  const std::unique_ptr<session::Session> session = session::openVirtual("porter", peopledRoom());
  std::vector<WireTopic> topics;
  std::optional<Peer> peer;
  test::LogCapture log;
};

INSTANTIATE_TEST_SUITE_P(Starts, PeerTest, testing::Bool(),
                         [](const auto& is) { return is.param ? "PeerFirst" : "RobotFirst"; });

TEST_P(PeerTest, readsEveryTopicByteForByteAndDrives) {
  if (GetParam()) {
    peer.emplace(argumentsFor(topics));
    ASSERT_TRUE(peer->awaitReady());
  }
  RobotOnGraph sut(*session);
  if (!peer) peer.emplace(argumentsFor(topics));
  const std::set<std::string> touches = {"rt/FrontBumper/contact", "rt/BackBumper/contact",
                                         "rt/Touch/points"};
  auto others = outputsOf(topics);
  for (const std::string& name : touches) EXPECT_EQ(others.erase(name), 1u) << name;
  // A blind zone says nothing while the robot moves.
  runUntilGot(sut, others, [](int) {});
  // A bumper speaks when it is touched, maybe before the peer listens.
  runUntilGot(sut, touches, [&](int time) {
    const float direction = time % 2 == 0 ? 1.0f : -1.0f;
    session->setPose({5.0f + 4.6f * direction, 3.0f, 0.0f});
    session->drive({0.4f * direction, 0.0f, 0.0f}, boost::chrono::seconds(1));
  });
  session->setPose({3.0f, 3.0f, 0.0f});
  peer->drive();
  EXPECT_TRUE(
      runUntil(sut, [&] { return session->look().velocity == Math::Pose2D(0.25f, 0.0f, 0.125f); }));

  const auto said = peer->get();
  auto written = test::getWritten();
  EXPECT_EQ(said.got.size(), outputsOf(topics).size());
  for (const auto& [topic, digests] : said.got) {
    for (const std::uint64_t digest : digests)
      EXPECT_EQ(written[topic].all.count(digest), 1u) << topic << ": a message that nobody wrote";
  }
  EXPECT_GT(said.seen.size(), topics.size());
  for (const auto& [topic, bytes] : said.seen) EXPECT_GT(bytes, 70) << topic;
}

}  // namespace
}  // namespace QV::ros2
