#pragma once

#include <algorithm>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace QV::test {

/** The base of a model in simulated time, whose calls are due by time and then by order. */
template <typename Model>
struct TimeModel {
  using Turn = std::pair<int, int>;

  Turn in(int ms, std::function<void(Model&)> call) {
    const Turn turn(now + std::max(ms, 0), ++orders);
    queue[turn] = std::move(call);
    return turn;
  }

  /** Runs the next call up to `limit`; false if there is none. */
  bool runNext(int limit) {
    if (queue.empty() || queue.begin()->first.first > limit) return false;
    const auto next = queue.extract(queue.begin());
    now = std::max(now, next.key().first);
    next.mapped()(static_cast<Model&>(*this));
    return true;
  }

  /** For no time it returns at once. */
  void sleep(int ms) {
    if (ms == 0) return;
    const int target = now + ms;
    while (runNext(target)) {
    }
    now = std::max(now, target);
  }

  /** Milliseconds. */
  int now = 0;
  int orders = 0;
  std::map<Turn, std::function<void(Model&)>> queue;
};

/** The locks that a model holds during calls: each with its name and what it was taken for. */
using HeldLocks = std::vector<std::pair<std::string, std::string>>;

/** Holds a lock for a scope; throws if it is held already. */
class ModelLock {
 public:
  ModelLock(HeldLocks& held, const std::string& lock, const std::string& what) : held(held) {
    for (const auto& [other, holder] : held) {
      if (other != lock) continue;
      throw std::logic_error(what + " would wait for ever: on the same thread " + holder +
                             " has not returned");
    }
    held.emplace_back(lock, what);
  }
  ~ModelLock() { held.pop_back(); }
  ModelLock(const ModelLock&) = delete;
  ModelLock& operator=(const ModelLock&) = delete;

 private:
  HeldLocks& held;
};

}  // namespace QV::test
