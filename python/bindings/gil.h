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

/**
 * Lets a thread of C++'s run Python for a scope; std::runtime_error once Python has begun to end.
 */
class Locked {
 public:
  Locked();
  ~Locked();
  Locked(const Locked&) = delete;
  Locked& operator=(const Locked&) = delete;

  /** True if C++ has called Python on this thread, and waits for it. */
  static bool isHere();

 private:
  PyGILState_STATE state;
};

/** Raises KeyboardInterrupt if somebody has pressed Ctrl-C. With the interpreter's lock. */
inline void checkInterrupt() {
  if (PyErr_CheckSignals() != 0) throw pybind11::error_already_set();
}

/**
 * A scope in which a thread of C++'s works for Python, which waits for it a little when it ends.
 */
class Aside {
 public:
  Aside();
  ~Aside();
  Aside(const Aside&) = delete;
  Aside& operator=(const Aside&) = delete;
};

/**
 * Python begins to end, on this thread, which may go on as before. Waits a little for other threads
 * that run Python, or are to come back to it. With the interpreter's lock.
 */
void beginToEnd();
bool hasBegunToEnd();

/**
 * Runs `call` while other threads may run Python. Whatever takes a lock or waits does so: who holds
 * the lock may need the interpreter.
 */
template <typename Call>
auto unlocked(Call&& call) {
  const Unlocked away;
  return std::forward<Call>(call)();
}

}  // namespace QV::python
