#pragma once

#include <dds/dds.h>
#include <dds/ddsi/ddsi_sertype.h>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "ros2/graph/graph.h"
#include "ros2/graph/internal/arrival.h"
#include "ros2/graph/internal/entity.h"
#include "ros2/graph/internal/node_entities.h"

namespace QV::ros2 {

struct QosDeleter {
  void operator()(dds_qos_t* qos) const { dds_delete_qos(qos); }
};
using QosPtr = std::unique_ptr<dds_qos_t, QosDeleter>;

/** Makes the settings, with the type's hash as user data, which peers ask of every endpoint. */
QosPtr qosOf(const Qos& qos, const MessageType& type);
Qos qosFrom(const dds_qos_t* qos);

struct TypeUnref {
  void operator()(ddsi_sertype* type) const { ddsi_sertype_unref(type); }
};

/** A topic of the engine for messages in CDR. The type stays while messages are made of it, also if
 * the engine's own entities are gone. */
struct Topic {
  Entity entity;
  std::unique_ptr<ddsi_sertype, TypeUnref> type;
};

/** The participant that all nodes of a Graph share. */
class Participant {
 public:
  explicit Participant(const GraphOptions& options);
  ~Participant();

  dds_entity_t get() const { return arrival.getParticipant(); }
  const GraphOptions& getOptions() const { return options; }

  Topic makeTopic(const std::string& ddsName, const MessageType& type) const;

  /** Returns the other name of a topic, and notes that it was asked for. */
  std::optional<std::string> remap(const std::string& topic);
  std::vector<std::string> findUnusedRemaps();

  /** Announces all nodes to the graph after `change` has changed one. */
  template <typename Change>
  void announce(const Change& change) {
    const std::lock_guard lock(mutex);
    change();
    xAnnounce();
  }
  void add(const NodeEntities* node) {
    announce([&] { nodes.insert(node); });
  }
  void remove(const NodeEntities* node) {
    announce([&] { nodes.erase(node); });
  }

 private:
  void xAnnounce();

  const GraphOptions options;
  Entity domain;
  Arrival arrival;
  Topic nodesTopic;
  Entity nodesWriter;
  std::mutex mutex;
  std::set<const NodeEntities*> nodes;
  std::set<std::string> remapped;
};

}  // namespace QV::ros2
