#include "apps/interrupt.h"

#include <atomic>
#include <csignal>

namespace QV::app {
namespace {

std::atomic<bool> interrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free);

extern "C" void onSignal(int) {
  interrupted = true;
}

}  // namespace

void catchInterrupts() {
  std::signal(SIGINT, onSignal);
  std::signal(SIGTERM, onSignal);
}

bool isInterrupted() {
  return interrupted;
}

}  // namespace QV::app
