#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "ros2/bag/bag_reader.h"
#include "ros2/graph/graph.h"
#include "ros2/messages/geometry_msgs.h"

namespace QV::test {

/** Publishes a recording's messages, and its times on /clock. */
class BagPlayer {
 public:
  BagPlayer(const std::string& path, ros2::GraphNode& node)
      : path(path), node(node), bag(std::make_unique<ros2::BagReader>(path)) {
    for (const ros2::BagTopic* const topic : bag->getTopics()) xAdd(*topic);
    clock = node.publish("/clock", ros2::rosgraph_msgs::Clock::getType());
  }

  /** The next message and the clock of its time, in nanoseconds; at the end, from the start again.
   */
  std::uint64_t playNext() {
    auto message = bag->next();
    if (!message) {
      bag = std::make_unique<ros2::BagReader>(path);
      message = bag->next();
    }
    const std::uint64_t time = message->logTime;
    clock->write(ros2::rosgraph_msgs::Clock{
        {static_cast<std::int32_t>(time / kSecond), static_cast<std::uint32_t>(time % kSecond)}});
    const auto publisher = publishers.find(message->topic->name);
    if (publisher != publishers.end())
      publisher->second->write(ros2::Bytes(message->data.begin(), message->data.end()));
    return time;
  }

  /** Readers of a topic of the recording. */
  std::size_t countReaders(const std::string& topic) const {
    return publishers.at(topic)->getReaderCount();
  }

 private:
  static constexpr std::uint64_t kSecond = 1'000'000'000;

  void xAdd(const ros2::BagTopic& topic) {
    const auto* type = ros2::findMessageType(topic.type);
    if (!type || topic.encoding != "cdr") return;
    const bool isLatched = topic.name == "/tf_static" || topic.name == "/robot_description";
    publishers[topic.name] = node.publish(topic.name, *type, {true, isLatched, 10});
  }

  const std::string path;
  ros2::GraphNode& node;
  std::unique_ptr<ros2::BagReader> bag;
  std::map<std::string, std::unique_ptr<ros2::Publisher>> publishers;
  std::unique_ptr<ros2::Publisher> clock;
};

}  // namespace QV::test
