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

/** Throws std::logic_error, which names both ends, if this thread holds the mutex already. */
QV_API void refuseSecond(const HeldLock& wanted);
QV_API void noteHeld(HeldLock& held);
QV_API void noteReleased(const HeldLock& held);

/** True if this thread took `mutex` by a CallLock and has not released it. */
QV_API bool isHeldHere(const void* mutex);

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
    noteHeld(held);
  }
  ~CallLock() {
    noteReleased(held);
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
