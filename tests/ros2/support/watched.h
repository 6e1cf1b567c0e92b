#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

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
  /** False if it does not come true in half a minute. */
  template <typename Accept>
  bool awaitThat(const Accept& accept) {
    std::unique_lock lock(mutex);
    return changed.wait_for(lock, std::chrono::seconds(30), [&] { return accept(value); });
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

}  // namespace QV::test
