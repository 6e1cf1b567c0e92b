#pragma once

#include <string>

#include "platform/api.h"
#include "platform/ko/internal/owner_wait.h"

namespace ko::detail {

/** A mutex that this thread holds while it calls others. */
struct HeldLock {
  const void* mutex;
  /** What it was taken for, as in "Sensor::getData", and on behalf of whom. */
  const char* what;
  const std::string* who;
  const HeldLock* before = nullptr;
};

/** The newest lock of this thread; null for none. Every reading takes one, so it is reached without
 * a call: it lies in the storage that a thread has from its start. */
extern QV_API thread_local constinit const HeldLock* newestLock
    __attribute__((tls_model("initial-exec")));

/** Returns the lock of `list` by which `mutex` is held; null if it is not. */
inline const HeldLock* findHeld(const HeldLock* list, const void* mutex) {
  while (list && list->mutex != mutex) list = list->before;
  return list;
}

/** True if this thread took `mutex` by a CallLock and has not released it. */
inline bool isHeldHere(const void* mutex) {
  return findHeld(newestLock, mutex) != nullptr;
}

/** Throws std::logic_error, which names both ends. */
[[noreturn]] QV_API void refuse(const HeldLock& wanted, const HeldLock& held);

/** Calls refuse() if this thread holds the mutex already. */
inline void refuseSecond(const HeldLock& wanted) {
  if (const HeldLock* const first = findHeld(newestLock, wanted.mutex)) refuse(wanted, *first);
}

/** True for a thread that sleeps in simulated time and holds `mutex`. */
QV_API SleeperTest holding(const void* mutex);

/**
 * Locks a mutex for a scope that calls others: hardware, a module, a source of images. Whom it
 * calls may sleep, and in simulated time the thread then runs other calls. If such a call locks the
 * mutex again, it gets the error of refuseSecond() instead of waiting for ever. The owner of a
 * SimulatedTime that waits for a thread asleep in that time lets it go on.
 */
template <typename Mutex>
class CallLock {
 public:
  /** Both texts must outlive the lock. */
  CallLock(Mutex& mutex, const char* what, const std::string& who)
      : mutex(mutex), held{&mutex, what, &who} {
    refuseSecond(held);
    if (!mutex.try_lock() && !waitAsOwner([&] { return mutex.try_lock(); }, holding(&mutex))) {
      mutex.lock();
    }
    held.before = newestLock;
    newestLock = &held;
  }
  ~CallLock() {
    newestLock = held.before;
    mutex.unlock();
    tellOwner();
  }
  CallLock(const CallLock&) = delete;
  CallLock& operator=(const CallLock&) = delete;

 private:
  Mutex& mutex;
  HeldLock held;
};

}  // namespace ko::detail
