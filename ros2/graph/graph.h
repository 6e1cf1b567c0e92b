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

/** The reach of discovery, besides the listed peers. */
enum class DiscoveryRange { off, localhost, subnet };

/** The ROS 2 distribution; it decides the layout of some messages. */
enum class RosDistro { humble, ironOrLater };

struct QV_API GraphOptions {
  int domain = 0;
  DiscoveryRange range = DiscoveryRange::localhost;
  RosDistro distro = RosDistro::ironOrLater;
  /** True if the nodes' names are announced; topics work without. */
  bool announcesNodes = true;
  /** The addresses of further participants (ROS_STATIC_PEERS). */
  std::vector<std::string> peers = {};
  /** The network interface; empty: the default of the range. */
  std::string networkInterface = {};
  /** Remaps: the original full topic name, then the new full name. */
  std::map<std::string, std::string> remaps = {};
  /** The configuration of Cyclone DDS, as in CYCLONEDDS_URI. It overrides domain, range, peers and
   * networkInterface. */
  std::string configuration = {};
};

/**
 * Reads ROS_DOMAIN_ID, ROS_LOCALHOST_ONLY, ROS_AUTOMATIC_DISCOVERY_RANGE, ROS_STATIC_PEERS,
 * ROS_DISTRO and CYCLONEDDS_URI. Discovery stays on this machine unless one of them sets a wider
 * range. Throws std::invalid_argument with the variable's name for an invalid value; an unknown
 * ROS_DISTRO is logged and counts as a new one.
 */
QV_API GraphOptions graphOptionsFromEnvironment();

/** Returns the layout of a distribution; an empty name counts as a new one. Throws
 * std::invalid_argument for an unknown name. */
QV_API RosDistro parseDistro(const std::string& name);

/** A topic with its type and quality of service. */
struct QV_API GraphTopic {
  /** The full name: "/robot1/scan". */
  std::string name;
  /** The type: "sensor_msgs/msg/LaserScan". */
  std::string type;
  Qos qos;
  friend bool operator<(const GraphTopic& a, const GraphTopic& b) {
    return std::pair(a.name, a.type) < std::pair(b.name, b.type);
  }
};

/**
 * Sends messages of one type to a topic. Thread-safe. The destructor removes it from the graph.
 */
class QV_API Publisher {
 public:
  virtual ~Publisher() = default;

  virtual const GraphTopic& getTopic() const = 0;
  /** Sends a message in CDR, with its 4-byte header. Waits 100 ms at most; then the message is lost
   * and counted. */
  virtual void write(Bytes cdr) = 0;
  template <typename Message>
  void write(const Message& message) {
    Bytes cdr;
    Message::getType().encode(&message, cdr);
    write(std::move(cdr));
  }

  /** Returns the number of matched subscriptions, here and in other programs. */
  virtual std::size_t getReaderCount() const = 0;
  virtual std::uint64_t getLostCount() const = 0;
};

/** A subscription to a topic. The destructor waits for a callback in progress. */
class QV_API Subscription {
 public:
  virtual ~Subscription() = default;

  virtual const GraphTopic& getTopic() const = 0;
  virtual std::size_t getWriterCount() const = 0;
};

struct ReceivedMessage {
  /** Valid during the callback. */
  BytesView cdr;
  /** The time at which it was written, by the writer's wall clock, nanoseconds. */
  std::int64_t sourceTime = 0;
};

/**
 * A callback for a message, on a DDS thread. It must return soon and must not throw. The same holds
 * for OnMatch.
 */
using OnMessage = std::function<void(const ReceivedMessage&)>;
/** A callback with the number of matched readers or writers. */
using OnMatch = std::function<void(std::size_t)>;

/**
 * A node with its publishers and subscriptions. A topic "scan" is in its namespace, "/scan" is not,
 * "~/scan" is under its name. Throws std::invalid_argument for an invalid name,
 * std::runtime_error if DDS refuses. Thread-safe.
 */
class QV_API GraphNode {
 public:
  virtual ~GraphNode() = default;

  virtual std::unique_ptr<Publisher> publish(const std::string& topic, const MessageType& type,
                                             const Qos& qos = {}, OnMatch onMatch = {}) = 0;
  virtual std::unique_ptr<Subscription> subscribe(const std::string& topic, const MessageType& type,
                                                  const Qos& qos, OnMessage onMessage,
                                                  OnMatch onMatch = {}) = 0;
  /** Returns the full name of a topic, after the remaps. */
  virtual std::string resolve(const std::string& topic) const = 0;
};

/**
 * A participant of a ROS 2 graph, without ROS: nodes of other programs see ours by name and the
 * other way round. Several may live in one process and see each other. The process leaves the graph
 * when this and all objects made by it are destroyed. Thread-safe.
 */
class QV_API Graph {
 public:
  /** Joins the graph. Throws std::runtime_error for an unusable network or configuration. */
  explicit Graph(const GraphOptions& options = graphOptionsFromEnvironment());
  ~Graph();
  Graph(const Graph&) = delete;
  Graph& operator=(const Graph&) = delete;

  /** `nameSpace` is "/" or "/robot1". */
  std::unique_ptr<GraphNode> createNode(const std::string& name,
                                        const std::string& nameSpace = "/");

  RosDistro getDistro() const;

  /** Returns the topics that others publish, sorted by name and type, each once. */
  std::vector<GraphTopic> findTopics() const;
  /** Returns the topics of `remaps` that no publisher or subscription has asked for yet. */
  std::vector<std::string> findUnusedRemaps() const;

 private:
  std::shared_ptr<class Participant> participant;
};

}  // namespace QV::ros2
