#include "python/bindings/gil.h"

#include <atomic>
#include <chrono>
#include <thread>
#include <unistd.h>

namespace QV::python {
namespace {

std::atomic<bool> ending{false};
/** Set before `ending` is: this one ends all that lives. */
std::thread::id ender;
/** Threads that have let others run Python, and those of them that never come back. */
std::atomic<int> awayCount{0};
std::atomic<int> parkedCount{0};
thread_local int lockedDepth = 0;

bool isTooLate() {
  return ending && std::this_thread::get_id() != ender;
}

[[noreturn]] void park() {
  ++parkedCount;
  for (;;) pause();
}

}  // namespace

Unlocked::Unlocked() : state((++awayCount, PyEval_SaveThread())) {}

Unlocked::~Unlocked() {
  if (isTooLate()) park();
  PyEval_RestoreThread(state);
  --awayCount;
}

Locked::Locked() {
  ++awayCount;
  if (isTooLate()) {
    --awayCount;
    throw std::runtime_error("Python is ending");
  }
  state = PyGILState_Ensure();
  --awayCount;
  ++lockedDepth;
}

Locked::~Locked() {
  --lockedDepth;
  PyGILState_Release(state);
}

bool Locked::isHere() {
  return lockedDepth > 0;
}

Aside::Aside() {
  ++awayCount;
}

Aside::~Aside() {
  --awayCount;
}

bool hasBegunToEnd() {
  return ending;
}

void beginToEnd() {
  ender = std::this_thread::get_id();
  ending = true;
  PyThreadState* const state = PyEval_SaveThread();
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(1);
  while (awayCount > parkedCount && std::chrono::steady_clock::now() < end)
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  PyEval_RestoreThread(state);
}

}  // namespace QV::python
