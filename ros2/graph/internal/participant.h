#pragma once

#include <dds/dds.h>
#include <dds/ddsi/ddsi_sertype.h>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "ros2/graph/graph.h"
#include "ros2/graph/internal/node_entities.h"

namespace QV::ros2 {

/** Returns `result`. Throws std::runtime_error with the failed action if it is an error. */
dds_entity_t checked(dds_entity_t result, const std::string& what);

Guid guidOf(dds_entity_t entity);

/** An entity of the engine, deleted with all that was made in it. */
class Entity {
 public:
  explicit Entity(dds_entity_t handle = 0) : handle(handle) {}
  ~Entity() { reset(); }
  Entity(Entity&& other) noexcept : handle(std::exchange(other.handle, 0)) {}
  Entity& operator=(Entity&& other) noexcept {
    std::swap(handle, other.handle);
    return *this;
  }

  dds_entity_t get() const { return handle; }
  void reset() {
    if (handle > 0) dds_delete(std::exchange(handle, 0));
  }

 private:
  dds_entity_t handle;
};

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

  dds_entity_t get() const { return participant.get(); }
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
  Entity participant;
  Topic nodesTopic;
  Entity nodesWriter;
  std::mutex mutex;
  std::set<const NodeEntities*> nodes;
  std::set<std::string> remapped;
};

}  // namespace QV::ros2
