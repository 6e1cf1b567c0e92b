#pragma once

#include <pybind11/pybind11.h>
#include <stdexcept>
#include <utility>

namespace QV::python {

/**
 * Lets other threads run Python for a scope. A thread that comes back when Python has begun to end
 * stays away for good: Python would end it in the midst of C++.
 */
class Unlocked {
 public:
  Unlocked();
  ~Unlocked();
  Unlocked(const Unlocked&) = delete;
  Unlocked& operator=(const Unlocked&) = delete;

 private:
  PyThreadState* const state;
};

/** Has a thread of C++'s run Python for a scope; std::runtime_error once Python has begun to end.
 */
class Locked {
 public:
  Locked();
  ~Locked();
  Locked(const Locked&) = delete;
  Locked& operator=(const Locked&) = delete;

 private:
  PyGILState_STATE state;
};

/**
 * Python begins to end, on this thread, which may go on as before. Waits a little for those who are
 * away. With the interpreter's lock.
 */
void beginToEnd();

/**
 * Runs `call` while other threads may run Python. Whatever takes a lock or waits does so: who holds
 * the lock may need the interpreter.
 */
template <typename Call>
auto unlocked(Call&& call) {
  const Unlocked away;
  return std::forward<Call>(call)();
}

/** Lets an object go while other threads may run Python. */
template <typename Pointer>
void letGo(Pointer& pointer) {
  if (!pointer) return;
  Pointer last;
  std::swap(last, pointer);
  const Unlocked away;
  last.reset();
}

}  // namespace QV::python
