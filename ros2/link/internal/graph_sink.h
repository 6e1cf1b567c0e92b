#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "ros2/graph/graph.h"
#include "ros2/link/internal/receive_buffers.h"
#include "ros2/recording/internal/message_sink.h"

namespace QV::ros2 {

/** Publishes the topics of a session as those of a node. Topics are added by one thread, before
 * others use it; writing and the rest is thread-safe. */
class GraphSink : public MessageSink {
 public:
  /** `node` must outlive it. `hasOwnFrames`: tf is in the node's namespace, too. `named`: other
   * names of topics, as GraphNode has them. */
  GraphSink(GraphNode& node, RosDistro distro, bool hasOwnFrames,
            std::map<std::string, std::string> named);

  /** std::invalid_argument for a name that is none, or that another topic has. */
  std::uint16_t addTopic(const SessionTopic& topic) override;
  bool isRead(std::uint16_t topic) const override;

  std::size_t getSize() const { return topics.size(); }
  /** How often readers have come or gone. */
  std::uint64_t getMatchCount() const { return matches; }
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
    /** Null if it has other messages. */
    std::unique_ptr<ImageTopic> images;
  };

  void xWrite(std::uint16_t topic, std::uint64_t time, const MessageType& type,
              const void* message) override;
  std::string xPlace(const std::string& name) const;
  std::unique_ptr<Publisher> xPublish(const SessionTopic& topic, const MessageType& type);
  void xCheckIsNew(const std::string& name, const std::string& sensor) const;

  GraphNode& node;
  const RosDistro distro;
  const bool hasOwnFrames;
  const std::map<std::string, std::string> named;
  std::atomic<std::uint64_t> matches{0};
  std::vector<Topic> topics;
};

}  // namespace QV::ros2
