#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <unistd.h>

#include "ros2/graph/graph.h"

namespace QV::test {

/** Something that another thread changes and this one waits for. */
template <typename T>
class Watched {
 public:
  template <typename Change>
  void change(const Change& change) {
    {
      const std::lock_guard lock(mutex);
      change(value);
    }
    changed.notify_all();
  }
  /** False if it does not come true in ten seconds. */
  template <typename Accept>
  bool awaitThat(const Accept& accept) {
    std::unique_lock lock(mutex);
    return changed.wait_for(lock, std::chrono::seconds(10), [&] { return accept(value); });
  }
  T get() {
    const std::lock_guard lock(mutex);
    return value;
  }

 private:
  std::mutex mutex;
  std::condition_variable changed;
  T value{};
};

/** A graph that no other process of this machine is on. */
inline ros2::GraphOptions aloneOn(int offset = 0) {
  ros2::GraphOptions options;
  options.domain = 1 + (getpid() + offset) % 100;
  return options;
}

}  // namespace QV::test
