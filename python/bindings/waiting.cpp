#include "python/bindings/waiting.h"

#include <atomic>
#include <unistd.h>

namespace QV::python {

namespace py = pybind11;

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
  return isMainThread() && !Locked::isHere() && !hasBegunToEnd();
}

void raiseLater(py::error_already_set& error) {
  if (error.matches(PyExc_KeyboardInterrupt)) return PyErr_SetInterrupt();
  error.discard_as_unraisable("waiting for what goes");
}

bool mayLeaveTime() {
  return mayLeave() && mover.load() != std::this_thread::get_id();
}

}  // namespace QV::python
