#include "platform/ko/internal/call_lock.h"

#include <stdexcept>

namespace ko::detail {
namespace {

thread_local const HeldLock* newest = nullptr;

const HeldLock* find(const HeldLock* list, const void* mutex) {
  while (list && list->mutex != mutex) list = list->before;
  return list;
}

std::string textOf(const HeldLock& lock) {
  const std::string what = lock.what;
  return lock.who->empty() ? what : what + " of \"" + *lock.who + "\"";
}

}  // namespace

void refuseSecond(const HeldLock& wanted) {
  const HeldLock* const first = find(newest, wanted.mutex);
  if (!first) return;
  throw std::logic_error(textOf(wanted) + " would wait for ever: on the same thread " +
                         textOf(*first) + " has not returned");
}

void noteHeld(HeldLock& held) {
  held.before = newest;
  newest = &held;
}

void noteReleased(const HeldLock& held) {
  newest = held.before;
}

bool isHeldHere(const void* mutex) {
  return find(newest, mutex) != nullptr;
}

const HeldLock* getHeld() {
  return newest;
}

SleeperTest holding(const void* mutex) {
  return [mutex](const Sleeper& sleeper) { return find(sleeper.held, mutex) != nullptr; };
}

}  // namespace ko::detail
