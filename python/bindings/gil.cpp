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
/** Scopes in which threads run Python for C++ or let others run it, and those that never end. */
std::atomic<int> openCount{0};
std::atomic<int> parkedCount{0};
/** This thread's. */
thread_local int openHere = 0;
thread_local int lockedDepth = 0;

void open() {
  ++openHere;
  ++openCount;
}

void close() {
  --openHere;
  --openCount;
}

bool isTooLate() {
  return ending && std::this_thread::get_id() != ender;
}

[[noreturn]] void park() {
  parkedCount += openHere;
  for (;;) pause();
}

}  // namespace

Unlocked::Unlocked() : state((open(), PyEval_SaveThread())) {}

Unlocked::~Unlocked() {
  if (isTooLate()) park();
  PyEval_RestoreThread(state);
  close();
}

Locked::Locked() {
  open();
  if (isTooLate()) {
    close();
    throw std::runtime_error("Python is ending");
  }
  state = PyGILState_Ensure();
  ++lockedDepth;
}

// Python ends a thread that wants to run it too late, in the midst of C++: whoever runs it counts.
Locked::~Locked() {
  --lockedDepth;
  PyGILState_Release(state);
  close();
}

bool Locked::isHere() {
  return lockedDepth > 0;
}

// Made on one thread, gone on another.
Aside::Aside() {
  ++openCount;
}

Aside::~Aside() {
  --openCount;
}

bool hasBegunToEnd() {
  return ending;
}

void beginToEnd() {
  ender = std::this_thread::get_id();
  ending = true;
  PyThreadState* const state = PyEval_SaveThread();
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(1);
  while (openCount > parkedCount + openHere && std::chrono::steady_clock::now() < end)
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  PyEval_RestoreThread(state);
}

}  // namespace QV::python
