#pragma once

#include <dds/dds.h>
#include <string>
#include <utility>

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

}  // namespace QV::ros2
