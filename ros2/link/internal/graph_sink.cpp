#include "ros2/link/internal/graph_sink.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "ros2/messages/sensor_msgs.h"
#include "ros2/recording/internal/topic_names.h"

namespace QV::ros2 {
namespace {

bool isOneOf(const std::string& name, std::initializer_list<const char*> names) {
  return std::ranges::find(names, name) != names.end();
}

/** Range had no variance up to Humble. */
const MessageType& typeFor(RosDistro distro, const MessageType& type) {
  const bool isShorter = distro == RosDistro::humble && &type == &sensor_msgs::Range::getType();
  return isShorter ? sensor_msgs::Range::getTypeWithoutVariance() : type;
}

}  // namespace

GraphSink::GraphSink(GraphNode& node, RosDistro distro, bool hasOwnFrames,
                     std::map<std::string, std::string> named)
    : node(node), distro(distro), hasOwnFrames(hasOwnFrames), named(std::move(named)) {}

std::string GraphSink::xPlace(const std::string& name) const {
  const auto other = named.find(name);
  if (other != named.end()) return other->second;
  const bool isShared = isOneOf(name, {"/clock", "/diagnostics"}) ||
                        (!hasOwnFrames && isOneOf(name, {"/tf", "/tf_static"}));
  return isShared ? name : toGraphName(name.substr(1));
}

std::uint16_t GraphSink::addTopic(const SessionTopic& topic) {
  const MessageType& type = typeFor(distro, *topic.type);
  auto publisher = xPublish(topic, type);
  xCheckIsNew(publisher->getTopic().name, topic.sensor);
  const bool hasImages = &type == &sensor_msgs::Image::getType();
  topics.push_back({&type, topic.sensor, std::move(publisher),
                    hasImages ? std::make_unique<ImageTopic>() : nullptr});
  return static_cast<std::uint16_t>(topics.size() - 1);
}

std::unique_ptr<Publisher> GraphSink::xPublish(const SessionTopic& topic, const MessageType& type) {
  try {
    return node.publish(xPlace(topic.name), type, topic.qos, [this](std::size_t) { ++matches; });
  } catch (const std::invalid_argument& error) {
    if (topic.sensor.empty()) throw;
    throw std::invalid_argument(topic.sensor + ": " + error.what());
  }
}

void GraphSink::xCheckIsNew(const std::string& name, const std::string& sensor) const {
  const auto other = std::ranges::find_if(
      topics, [&](const Topic& topic) { return topic.publisher->getTopic().name == name; });
  if (other == topics.end()) return;
  const auto ownerOf = [](const std::string& of) { return of.empty() ? "the robot" : of; };
  throw std::invalid_argument("a topic of its own for each sensor expected, \"" + name +
                              "\" given for " + ownerOf(other->sensor) + " and " + ownerOf(sensor));
}

bool GraphSink::isRead(std::uint16_t topic) const {
  const Publisher& publisher = *topics[topic].publisher;
  return publisher.getReaderCount() > 0 || publisher.getTopic().qos.transientLocal;
}

bool GraphSink::hasReaders(std::size_t first, std::size_t last) const {
  for (std::size_t i = first; i < last; ++i) {
    if (topics[i].publisher->getReaderCount() > 0) return true;
  }
  return false;
}

std::set<std::string> GraphSink::getWantedSensors() const {
  std::set<std::string> sensors;
  for (const Topic& topic : topics) {
    if (!topic.sensor.empty() && topic.publisher->getReaderCount() > 0)
      sensors.insert(topic.sensor);
  }
  return sensors;
}

std::vector<std::pair<GraphTopic, const MessageType*>> GraphSink::getTopics() const {
  std::vector<std::pair<GraphTopic, const MessageType*>> all;
  all.reserve(topics.size());
  for (const Topic& topic : topics) all.emplace_back(topic.publisher->getTopic(), topic.type);
  return all;
}

std::uint64_t GraphSink::getLostCount() const {
  std::uint64_t lost = 0;
  for (const Topic& topic : topics) lost += topic.publisher->getLostCount();
  return lost;
}

void GraphSink::xWrite(std::uint16_t number, std::uint64_t, const MessageType&,
                       const void* message) {
  const Topic& topic = topics[number];
  Bytes cdr;
  topic.type->encode(message, cdr);
  if (topic.images && topic.publisher->getReaderCount() > 0) topic.images->note(cdr.size());
  topic.publisher->write(std::move(cdr));
}

}  // namespace QV::ros2
