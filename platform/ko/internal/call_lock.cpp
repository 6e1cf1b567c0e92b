#include "platform/ko/internal/call_lock.h"

#include <stdexcept>

namespace ko::detail {
namespace {

std::string textOf(const HeldLock& lock) {
  const std::string what = lock.what;
  return lock.who->empty() ? what : what + " of \"" + *lock.who + "\"";
}

}  // namespace

thread_local constinit const HeldLock* newestLock = nullptr;

void refuse(const HeldLock& wanted, const HeldLock& held) {
  throw std::logic_error(textOf(wanted) + " would wait for ever: on the same thread " +
                         textOf(held) + " has not returned");
}

const HeldLock* getHeld() {
  return newestLock;
}

SleeperTest holding(const void* mutex) {
  return [mutex](const Sleeper& sleeper) { return findHeld(sleeper.held, mutex) != nullptr; };
}

}  // namespace ko::detail
