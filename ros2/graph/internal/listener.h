#pragma once

#include <dds/dds.h>
#include <exception>
#include <memory>
#include <string>

#include "platform/ko/log.h"

namespace QV::ros2 {

/** Callbacks for an entity, copied when it is made. */
class Listener {
 public:
  explicit Listener(void* self) : listener(dds_create_listener(self)) {}
  ~Listener() { dds_delete_listener(listener); }
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;

  dds_listener_t* get() const { return listener; }

 private:
  dds_listener_t* const listener;
};

/** Lets no exception into the engine, which is written in C. */
template <typename Call>
void callSafely(const std::string& topic, const Call& call) {
  try {
    call();
  } catch (const std::exception& error) {
    ko::log::error("ROS2.Graph", "call") << topic << ": " << error.what();
  }
}

}  // namespace QV::ros2
