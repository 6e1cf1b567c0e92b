#include "apps/interrupt.h"

#include <atomic>
#include <csignal>

namespace QV::app {
namespace {

std::atomic<int> caught{0};
static_assert(std::atomic<int>::is_always_lock_free);

extern "C" void onSignal(int signal) {
  caught = signal;
}

}  // namespace

void catchInterrupts() {
  caught = 0;
  std::signal(SIGINT, onSignal);
  std::signal(SIGTERM, onSignal);
}

bool isInterrupted() {
  return caught != 0;
}

int getInterruptStatus() {
  return 128 + caught;
}

}  // namespace QV::app
