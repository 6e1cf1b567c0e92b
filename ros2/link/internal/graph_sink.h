#pragma once

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "ros2/graph/graph.h"
#include "ros2/recording/internal/message_sink.h"

namespace QV::ros2 {

/** Publishes the topics of a session as those of a node. Topics are added by one thread, before
 * others use it; writing and the rest is thread-safe. */
class GraphSink : public MessageSink {
 public:
  /** `node` must outlive it. `hasOwnFrames`: tf is in the node's namespace, too. */
  GraphSink(GraphNode& node, RosDistro distro, bool hasOwnFrames);

  std::uint16_t addTopic(const SessionTopic& topic) override;
  bool isRead(std::uint16_t topic) const override;

  std::size_t getSize() const { return topics.size(); }
  /** True if somebody reads one of the topics from `first` to before `last`. */
  bool hasReaders(std::size_t first, std::size_t last) const;
  /** Returns the sensors of which somebody reads a topic. */
  std::set<std::string> getWantedSensors() const;
  std::vector<std::pair<GraphTopic, const MessageType*>> getTopics() const;
  std::uint64_t getLostCount() const;

 private:
  struct Topic {
    const MessageType* type;
    std::string sensor;
    std::unique_ptr<Publisher> publisher;
  };

  void xWrite(std::uint16_t topic, std::uint64_t time, const MessageType& type,
              const void* message) override;
  std::string xPlace(const std::string& name) const;

  GraphNode& node;
  const RosDistro distro;
  const bool hasOwnFrames;
  std::vector<Topic> topics;
};

}  // namespace QV::ros2
