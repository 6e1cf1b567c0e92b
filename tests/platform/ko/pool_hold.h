#pragma once

#include <latch>
#include <memory>

#include "platform/ko/internal/event_loop.h"

namespace ko::test {

constexpr int kPoolThreads = 4;

/** Keeps threads of the pool busy until it is released. */
class PoolHold {
 public:
  explicit PoolHold(int threads) : gates(std::make_shared<Gates>(threads)) {
    for (int i = 0; i < threads; ++i) {
      getEventLoop().post([gates = gates] {
        gates->entered.count_down();
        gates->released.wait();
      });
    }
    gates->entered.wait();
  }
  ~PoolHold() { release(); }

  void release() {
    if (gates) gates->released.count_down();
    gates.reset();
  }

 private:
  struct Gates {
    explicit Gates(int threads) : entered(threads), released(1) {}
    std::latch entered;
    std::latch released;
  };
  std::shared_ptr<Gates> gates;
};

/** Returns when all that the pool was given before has been dealt with. */
inline void flushPool() {
  PoolHold everyThread(kPoolThreads);
}

}  // namespace ko::test
