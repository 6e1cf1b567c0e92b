#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/api.h"
#include "ros2/messages/message_type.h"

namespace QV::ros2 {

/** The range in which others are looked for, beyond the peers that are named. */
enum class DiscoveryRange { off, localhost, subnet };

/** The distributions, by the layout in which some messages travel. */
enum class RosDistro { humble, ironOrLater };

struct QV_API GraphOptions {
  int domain = 0;
  DiscoveryRange range = DiscoveryRange::localhost;
  RosDistro distro = RosDistro::ironOrLater;
  /** True if the nodes' names are told; topics work without. */
  bool announcesNodes = true;
  /** Addresses. */
  std::vector<std::string> peers = {};
  /** Empty: that of the range. */
  std::string networkInterface = {};
  /** Full topic names, by those that they stand for. */
  std::map<std::string, std::string> remaps = {};
  /** The configuration of the engine, as CYCLONEDDS_URI holds it; it goes before all that is
   * here. */
  std::string configuration = {};
};

/**
 * Reads ROS_DOMAIN_ID, ROS_LOCALHOST_ONLY, ROS_AUTOMATIC_DISCOVERY_RANGE, ROS_STATIC_PEERS,
 * ROS_DISTRO and CYCLONEDDS_URI. With none that speaks of the range, discovery stays on this
 * machine. A value that is none throws std::invalid_argument that names the variable.
 */
QV_API GraphOptions graphOptionsFromEnvironment();

/** Humble and older, or later; an empty or unknown one is taken for a later one. */
QV_API RosDistro parseDistro(const std::string& name);

/** A topic as somebody publishes it. */
struct QV_API GraphTopic {
  /** "/robot1/scan" */
  std::string name;
  /** "sensor_msgs/msg/LaserScan" */
  std::string type;
  Qos qos;
  friend bool operator<(const GraphTopic& a, const GraphTopic& b) {
    return std::pair(a.name, a.type) < std::pair(b.name, b.type);
  }
};

/**
 * Sends messages of one type to a topic. All operations are safe from any thread; it is gone from
 * the graph when it is destroyed.
 */
class QV_API Publisher {
 public:
  virtual ~Publisher() = default;

  virtual const GraphTopic& getTopic() const = 0;
  /** CDR with its head. Waits 100 ms at most; what can't be sent then is lost and counted. */
  virtual void write(Bytes cdr) = 0;
  template <typename Message>
  void write(const Message& message) {
    Bytes cdr;
    Message::getType().encode(&message, cdr);
    write(std::move(cdr));
  }

  /** Subscriptions that get what is written, here and anywhere. */
  virtual std::size_t getReaderCount() const = 0;
  virtual std::uint64_t getLostCount() const = 0;
};

/** Hears a topic until it is destroyed; its destructor waits for a call in progress. */
class QV_API Subscription {
 public:
  virtual ~Subscription() = default;

  virtual const GraphTopic& getTopic() const = 0;
  virtual std::size_t getWriterCount() const = 0;
};

struct ReceivedMessage {
  /** Good during the call. */
  BytesView cdr;
  /** The time at which it was written, by the writer's wall clock, nanoseconds. */
  std::int64_t sourceTime = 0;
};

/**
 * Hears a message, on a thread of the engine: it must return soon and must not throw. So must
 * OnMatch.
 */
using OnMessage = std::function<void(const ReceivedMessage&)>;
/** Hears how many there are now on the other side. */
using OnMatch = std::function<void(std::size_t)>;

/**
 * A node with its publishers and subscriptions. A topic "scan" is in its namespace, "/scan" is not,
 * "~/scan" is under its name. A name that is none throws std::invalid_argument; what the engine
 * refuses std::runtime_error. All operations are safe from any thread.
 */
class QV_API GraphNode {
 public:
  virtual ~GraphNode() = default;

  virtual std::unique_ptr<Publisher> publish(const std::string& topic, const MessageType& type,
                                             const Qos& qos = {}, OnMatch onMatch = {}) = 0;
  virtual std::unique_ptr<Subscription> subscribe(const std::string& topic, const MessageType& type,
                                                  const Qos& qos, OnMessage onMessage,
                                                  OnMatch onMatch = {}) = 0;
};

/**
 * A participant of a ROS 2 graph, without ROS: nodes of other programs see ours by name and the
 * other way round. Several may live in one process and hear each other. It is left when this and
 * everything made by it is destroyed. All operations are safe from any thread.
 */
class QV_API Graph {
 public:
  /** A network or a configuration that can't be used: std::runtime_error. */
  explicit Graph(const GraphOptions& options = graphOptionsFromEnvironment());
  ~Graph();
  Graph(const Graph&) = delete;
  Graph& operator=(const Graph&) = delete;

  /** `nameSpace` is "/" or "/robot1". */
  std::unique_ptr<GraphNode> createNode(const std::string& name,
                                        const std::string& nameSpace = "/");

  RosDistro getDistro() const;

  /** Finds what others publish, by name and type; each once. */
  std::vector<GraphTopic> findTopics() const;

 private:
  std::shared_ptr<class Participant> participant;
};

}  // namespace QV::ros2
