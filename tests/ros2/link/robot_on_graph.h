#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "ros2/link/graph_robot.h"
#include "ros2/messages/geometry_msgs.h"
#include "ros2/messages/scene_msgs.h"
#include "session/open.h"
#include "tests/ros2/support/own_domain.h"
#include "tests/ros2/support/watched.h"
#include "tests/support/log_capture.h"

namespace QV::ros2 {

/** The messages that a reader of a topic has heard. */
struct Heard {
  struct Message {
    Bytes cdr;
    std::int64_t sourceTime = 0;
  };

  OnMessage listener() {
    return [this](const ReceivedMessage& message) {
      messages.change([&](auto& list) {
        list.push_back({{message.cdr.begin(), message.cdr.end()}, message.sourceTime});
      });
    };
  }
  bool isEmpty() { return messages.get().empty(); }
  template <typename T>
  std::vector<T> all() {
    std::vector<T> read;
    for (const Message& message : messages.get()) read.push_back(fromCdr<T>(message.cdr));
    return read;
  }

  test::Watched<std::vector<Message>> messages;
  std::unique_ptr<Subscription> subscription;
};

/** Returns the nanoseconds since the epoch. */
inline std::int64_t nanoseconds(const builtin_interfaces::Time& stamp) {
  return std::int64_t{1'000'000'000} * stamp.sec + stamp.nanosec;
}

/** A robot on a graph, and somebody else there. */
class RobotOnGraph {
 public:
  explicit RobotOnGraph(session::Session& session, const GraphRobotOptions& options = {},
                        const GraphOptions& graph = test::aloneOn())
      : session(session), ours(graph), robot(ours, session, options) {}

  /** All that comes from now on. */
  std::unique_ptr<Heard> listen(const std::string& topic, const MessageType& type,
                                const Qos& qos = {true, false, 1000}) {
    auto heard = std::make_unique<Heard>();
    heard->subscription = tool->subscribe(topic, type, qos, heard->listener());
    return heard;
  }
  template <typename Message>
  std::unique_ptr<Heard> listen(const std::string& topic) {
    return listen(topic, Message::getType());
  }
  /** Sends again and again until it is so. */
  template <typename Message, typename Reached>
  bool sendUntil(Publisher& publisher, const Message& message, const Reached& reached) {
    return runUntil([&] {
      publisher.write(message);
      return reached();
    });
  }

  /** 20 ms, and everybody has heard of it. */
  void step() {
    robot.obey();
    session.setDemand(robot.getDemand());
    session.run(boost::chrono::milliseconds(20));
    if (++steps % 5 == 0 && robot.isWatched()) robot.show(session.look());
    if (clock->isEmpty()) return;
    const std::int64_t now = ko::Clock::now().time_since_epoch().count() + 1'000'000'000;
    EXPECT_TRUE(clock->messages.awaitThat([&](const auto& list) {
      return nanoseconds(fromCdr<rosgraph_msgs::Clock>(list.back().cdr).clock) >= now;
    }));
  }
  void run(int count) {
    for (int i = 0; i < count; ++i) step();
  }
  /** Steps until it is so; false after half a minute of the machine's. */
  template <typename Reached>
  bool runUntil(const Reached& reached) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!reached()) {
      if (std::chrono::steady_clock::now() > end) return false;
      step();
    }
    return true;
  }

  session::Session& session;
  Graph ours;
  Graph theirs{test::aloneOn()};
  GraphRobot robot;
  const std::unique_ptr<GraphNode> tool = theirs.createNode("tool");
  const std::unique_ptr<Heard> clock = listen<rosgraph_msgs::Clock>("/clock");

 private:
  int steps = 0;
};

}  // namespace QV::ros2
