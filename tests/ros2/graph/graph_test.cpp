#include "ros2/graph/graph.h"

#include <atomic>
#include <dds/dds.h>

#include <gmock/gmock.h>

#include "ros2/graph/internal/node_entities.h"
#include "ros2/messages/geometry_msgs.h"
#include "ros2/messages/sensor_msgs.h"
#include "tests/ros2/support/own_domain.h"
#include "tests/ros2/support/watched.h"
#include "tests/support/log_capture.h"
#include "tests/support/vocabulary.h"

namespace QV::ros2 {
namespace {

using test::aloneOn;
using test::Watched;

struct GraphTest : testing::Test {
  /** Each is a participant of its own; they meet on the loopback interface. */
  Graph ours{aloneOn()};
  Graph theirs{aloneOn()};
  const std::unique_ptr<GraphNode> robot = ours.createNode("porter", "/robot1");
  const std::unique_ptr<GraphNode> tool = theirs.createNode("tool");
};

struct Heard {
  Watched<std::vector<std::string>> texts;
  OnMessage listener() {
    return [this](const ReceivedMessage& message) {
      texts.change(
          [&](auto& list) { list.push_back(fromCdr<std_msgs::String>(message.cdr).data); });
    };
  }
};

TEST_F(GraphTest, messagesOfAnySizeArriveCompletelyAndInOrder) {
  Watched<std::size_t> readers;
  const auto publisher = robot->publish(
      "image", sensor_msgs::Image::getType(), {true, false, 50},
      [&](std::size_t count) { readers.change([&](auto& value) { value = count; }); });
  Watched<std::vector<sensor_msgs::Image>> images;
  std::atomic<std::size_t> halfWords = 0;
  const auto subscription =
      tool->subscribe("/robot1/image", sensor_msgs::Image::getType(), {true, false, 50},
                      [&](const ReceivedMessage& message) {
                        if (message.cdr.size() % 4 != 0) ++halfWords;
                        images.change([&](auto& list) {
                          list.push_back(fromCdr<sensor_msgs::Image>(message.cdr));
                        });
                      });
  ASSERT_TRUE(readers.awaitThat([](std::size_t count) { return count == 1; }));
  EXPECT_EQ(publisher->getReaderCount(), 1u);
  std::vector<sensor_msgs::Image> expected(20);
  for (std::size_t i = 0; i < expected.size(); ++i) {
    expected[i].encoding = "16UC1";
    expected[i].data.assign(i * i * 1000 + i, static_cast<std::uint8_t>(i));
    publisher->write(expected[i]);
  }
  EXPECT_TRUE(images.awaitThat([&](const auto& list) { return list.size() == expected.size(); }));
  EXPECT_EQ(images.get(), expected);
  // Other engines write beyond the end of those that end amid a word.
  EXPECT_EQ(halfWords, 0u);
  EXPECT_EQ(publisher->getLostCount(), 0u);
}

// Nothing that is kept in part ever waits, so the engine is taken away.
TEST_F(GraphTest, whatCanNotBeSentIsCountedAndSaidOnce) {
  const auto sut = robot->publish("scan", sensor_msgs::LaserScan::getType());
  dds_entity_t participant = 0;
  ASSERT_EQ(dds_lookup_participant(static_cast<dds_domainid_t>(aloneOn().domain), &participant, 1),
            1);
  sut->write(sensor_msgs::LaserScan{});
  EXPECT_EQ(sut->getLostCount(), 0u);
  dds_delete(participant);
  const test::LogCapture log;
  for (int i = 0; i < 3; ++i) sut->write(sensor_msgs::LaserScan{});
  EXPECT_EQ(sut->getLostCount(), 3u);
  EXPECT_THAT(log.lines(ko::log::Level::warning),
              ElementsAre(testing::HasSubstr(
                  "/scan: a message could not be sent (further losses are only counted)")));
}

TEST_F(GraphTest, demandComesAndGoesWithTheSubscriptions) {
  Watched<std::vector<std::size_t>> counts;
  const auto publisher = robot->publish(
      "scan", sensor_msgs::LaserScan::getType(), {},
      [&](std::size_t count) { counts.change([&](auto& list) { list.push_back(count); }); });
  const auto subscribe = [&] {
    return tool->subscribe("/robot1/scan", sensor_msgs::LaserScan::getType(), {false},
                           [](auto&) {});
  };
  auto first = subscribe();
  ASSERT_TRUE(counts.awaitThat([](const auto& list) { return list.size() == 1; }));
  auto second = subscribe();
  ASSERT_TRUE(counts.awaitThat([](const auto& list) { return list.size() == 2; }));
  first.reset();
  ASSERT_TRUE(counts.awaitThat([](const auto& list) { return list.size() == 3; }));
  second.reset();
  ASSERT_TRUE(counts.awaitThat([](const auto& list) { return list.size() == 4; }));
  EXPECT_THAT(counts.get(), ElementsAre(1, 2, 1, 0));
}

TEST_F(GraphTest, aLateSubscriberGetsTheLastMessageOfATransientLocalTopic) {
  const Qos latched{true, true, 1};
  const auto publisher = robot->publish("/map_name", std_msgs::String::getType(), latched);
  publisher->write(std_msgs::String{"first"});
  publisher->write(std_msgs::String{"second"});
  Heard heard;
  const auto subscription =
      tool->subscribe("map_name", std_msgs::String::getType(), latched, heard.listener());
  EXPECT_TRUE(heard.texts.awaitThat([](const auto& list) { return !list.empty(); }));
  EXPECT_THAT(heard.texts.get(), ElementsAre("second"));
}

TEST_F(GraphTest, oneTopicMayHaveTwoTypes) {
  Watched<int> plain, stamped;
  const auto count = [](Watched<int>& heard) {
    return [&heard](const ReceivedMessage&) { heard.change([](int& value) { ++value; }); };
  };
  const auto a = robot->subscribe("/cmd_vel", geometry_msgs::Twist::getType(), {}, count(plain));
  const auto b =
      robot->subscribe("/cmd_vel", geometry_msgs::TwistStamped::getType(), {}, count(stamped));
  Watched<std::size_t> readers;
  const auto publisher =
      tool->publish("/cmd_vel", geometry_msgs::TwistStamped::getType(), {},
                    [&](std::size_t now) { readers.change([&](auto& value) { value = now; }); });
  ASSERT_TRUE(readers.awaitThat([](std::size_t now) { return now == 1; }));
  publisher->write(geometry_msgs::TwistStamped{});
  EXPECT_TRUE(stamped.awaitThat([](int value) { return value == 1; }));
  EXPECT_EQ(plain.get(), 0);
}

TEST_F(GraphTest, findsOtherNodesTopicsAndRemapsItsOwn) {
  GraphOptions options = aloneOn();
  options.remaps = {{"/robot1/scan", "/front/scan"}};
  Graph graph(options);
  const auto node = graph.createNode("renamed", "/robot1");
  const auto publisher = node->publish("scan", sensor_msgs::LaserScan::getType(), {true, true, 3});
  EXPECT_EQ(publisher->getTopic().name, "/front/scan");
  Watched<std::size_t> writers;
  const auto subscription = tool->subscribe(
      "/front/scan", sensor_msgs::LaserScan::getType(), {}, [](auto&) {},
      [&](std::size_t count) { writers.change([&](auto& now) { now = count; }); });
  ASSERT_TRUE(writers.awaitThat([](std::size_t count) { return count == 1; }));
  const auto topics = theirs.findTopics();
  ASSERT_EQ(topics.size(), 1u);
  EXPECT_EQ(topics[0].name, "/front/scan");
  EXPECT_EQ(topics[0].type, "sensor_msgs/msg/LaserScan");
  EXPECT_TRUE(topics[0].qos.transientLocal);
  EXPECT_TRUE(graph.findTopics().empty());
}

TEST(GraphRoom, whereThereIsNoneForAnotherProgramAnErrorSaysWhatToRaise) {
  GraphOptions options = aloneOn();
  options.configuration =
      "<CycloneDDS><Domain><Discovery><MaxAutoParticipantIndex>1</MaxAutoParticipantIndex>"
      "</Discovery></Domain></CycloneDDS>";
  const Graph first(options);
  EXPECT_THAT(errorOf([&] { Graph{options}; }),
              testing::HasSubstr("CYCLONEDDS_URI can raise Discovery/MaxAutoParticipantIndex"));
}

TEST_F(GraphTest, refusesInvalidNames) {
  for (const char* const topic : {"", "/", "scan/", "a//b", "2d", "front-scan", "~scan"}) {
    try {
      robot->publish(topic, std_msgs::String::getType());
      FAIL() << topic;
    } catch (const std::invalid_argument& error) {
      EXPECT_EQ(error.what(),
                "a topic of letters, digits and _ that begin with no digit expected, \"" +
                    std::string(topic) + "\" given");
    }
  }
  EXPECT_THROW(ours.createNode("a b"), std::invalid_argument);
  EXPECT_THROW(ours.createNode("a", "robot1"), std::invalid_argument);
  EXPECT_EQ(robot->publish("~/state", std_msgs::String::getType())->getTopic().name,
            "/robot1/porter/state");
}

}  // namespace
}  // namespace QV::ros2
