#include "tests/ros2/peer/peer.h"

#include <algorithm>
#include <map>
#include <set>

#include "tests/ros2/link/robot_on_graph.h"
#include "tests/ros2/peer/digest.h"
#include "tests/ros2/recording/recorded_session.h"
#include "tests/support/vocabulary.h"

namespace QV::ros2 {
namespace {

/** An engine may pad a message to whole words, and say so in its head or not. */
void addDigests(Bytes cdr, std::set<std::uint64_t>& digests) {
  const std::size_t padding = (4 - cdr.size() % 4) % 4;
  digests.insert(test::digestOf(cdr.data(), cdr.size()));
  cdr.resize(cdr.size() + padding);
  digests.insert(test::digestOf(cdr.data(), cdr.size()));
  cdr[3] = static_cast<std::uint8_t>(padding);
  digests.insert(test::digestOf(cdr.data(), cdr.size()));
}

/** Those of a robot that nothing touches. */
std::set<std::string> namesOf(const std::vector<WireTopic>& topics) {
  std::set<std::string> names;
  for (const WireTopic& wire : topics) {
    const bool isOfTouches =
        wire.ddsName.find("Bumper/") != std::string::npos || wire.ddsName.starts_with("rt/Touch/");
    if (!wire.isInput && !isOfTouches) names.insert(wire.ddsName);
  }
  return names;
}

/** A reader of ours of each topic. */
std::map<std::string, std::unique_ptr<Heard>> listenToAll(RobotOnGraph& graph,
                                                          const std::vector<WireTopic>& topics) {
  std::map<std::string, std::unique_ptr<Heard>> heard;
  for (const WireTopic& wire : topics)
    if (!wire.isInput)
      heard[wire.ddsName] = graph.listen(wire.topic.name, *findMessageType(wire.topic.type),
                                         {true, wire.topic.qos.transientLocal, 1000});
  return heard;
}

std::set<std::uint64_t> digestsOf(Heard& heard) {
  std::set<std::uint64_t> digests;
  for (const auto& message : heard.messages.get()) addDigests(message.cdr, digests);
  return digests;
}

/** It drives, and reads all that a robot says. */
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
  if (!peer) peer.emplace(arguments);
  EXPECT_TRUE(peer->awaitReady());
  const auto heard = listenToAll(sut, topics);
  std::set<std::string> missing = namesOf(topics);
  EXPECT_TRUE(sut.runUntil([&] {
    const auto got = peer->get().got;
    std::erase_if(missing, [&](const std::string& name) {
      const auto digests = got.find(name);
      if (digests == got.end()) return false;
      const auto ours = digestsOf(*heard.at(name));
      return std::ranges::any_of(digests->second, [&](auto d) { return ours.count(d) > 0; });
    });
    return missing.empty() && session->look().velocity == Math::Pose2D(0.25f, 0.0f, 0.125f);
  })) << testing::PrintToString(missing);
  const auto said = peer->get();
  EXPECT_GT(said.seen.size(), topics.size());
  for (const auto& [topic, bytes] : said.seen) EXPECT_GT(bytes, 70) << topic;
}

}  // namespace
}  // namespace QV::ros2
