#include "python/bindings/waiting.h"

#include <atomic>
#include <unistd.h>

namespace QV::python {
namespace {

/** The thread that moves time; one at most does in a process. */
std::atomic<std::thread::id> mover{};

bool isMainThread() {
  return gettid() == getpid();
}

}  // namespace

MovesTime::MovesTime() {
  mover = std::this_thread::get_id();
}

MovesTime::~MovesTime() {
  mover = std::thread::id();
}

bool mayLeave() {
  return isMainThread() && !Locked::isHere();
}

bool mayLeaveTime() {
  return mayLeave() && mover.load() != std::this_thread::get_id();
}

}  // namespace QV::python
