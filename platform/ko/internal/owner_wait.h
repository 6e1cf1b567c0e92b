#pragma once

#include <atomic>
#include <functional>
#include <thread>

#include "platform/api.h"

namespace ko::detail {

struct HeldLock;

/** A thread that sleeps in simulated time, and the newest of the locks that it holds. */
struct Sleeper {
  std::thread::id thread;
  const HeldLock* held;
};
using SleeperTest = std::function<bool(const Sleeper&)>;

/** Returns the newest CallLock of this thread; null for none. */
const HeldLock* getHeld();

/** True for a sleep of that thread. */
inline SleeperTest sleepOf(std::thread::id thread) {
  return [thread](const Sleeper& sleeper) { return sleeper.thread == thread; };
}

/**
 * On the thread of a SimulatedTime's owner: waits until `isOver` returns true, and advances the
 * time as long as `isAwaited` is asleep in it. Who makes `isOver` true must call tellOwner() then.
 * Returns false, and has not waited to the end, on other threads and if the SimulatedTime ends.
 */
QV_API bool waitAsOwner(const std::function<bool()>& isOver, const SleeperTest& isAwaited);

/** True while a SimulatedTime exists. */
extern QV_API std::atomic<bool> hasOwner;
QV_API void tellTheOwner();

/** Lets an owner that waits in waitAsOwner() look again. */
inline void tellOwner() {
  if (hasOwner) tellTheOwner();
}

}  // namespace ko::detail
