#pragma once

#include <chrono>
#include <future>
#include <memory>
#include <thread>
#include <type_traits>
#include <utility>

#include "python/bindings/gil.h"

namespace QV::python {

/**
 * A scope in which this thread moves simulated time: whoever waits for that on this thread moves
 * it.
 */
class MovesTime {
 public:
  MovesTime();
  ~MovesTime();
  MovesTime(const MovesTime&) = delete;
  MovesTime& operator=(const MovesTime&) = delete;
};

/**
 * True if this thread hears of Ctrl-C, C++ does not wait for it, and Python is not ending. Call it
 * with the interpreter's lock.
 */
bool mayLeave();
/** The same, if it moves no time. */
bool mayLeaveTime();

/** Fulfils the promise once the call and what it has are gone. */
template <typename Call, typename Result>
void fulfil(std::promise<Result>& promise, std::unique_ptr<Call>& call) try {
  if constexpr (std::is_void_v<Result>) {
    (*call)();
    call.reset();
    promise.set_value();
  } else {
    auto result = (*call)();
    call.reset();
    promise.set_value(std::move(result));
  }
} catch (...) {
  call.reset();
  promise.set_exception(std::current_exception());
}

/**
 * Runs what takes long, while other threads may run Python. Ctrl-C ends the waiting at once; the
 * call goes on by itself, and so owns what it needs. With the interpreter's lock.
 */
template <typename Call>
auto aside(Call call) {
  using Result = std::invoke_result_t<Call&>;
  constexpr std::chrono::milliseconds kLook{20};
  auto own = std::make_unique<Call>(std::move(call));
  if (!mayLeave()) {
    const Unlocked away;
    const auto last = std::move(own);
    return (*last)();
  }
  std::promise<Result> promise;
  auto future = promise.get_future();
  std::thread([counted = std::make_unique<Aside>(), promise = std::move(promise),
               own = std::move(own)]() mutable {
    fulfil<Call, Result>(promise, own);
  }).detach();
  while (!unlocked([&] { return future.wait_for(kLook) == std::future_status::ready; }))
    checkInterrupt();
  return future.get();
}

/** The same for what may wait for hardware, and so for time: not where this thread moves that. */
template <typename Call>
auto patiently(Call call) {
  if (mayLeaveTime()) return aside(std::move(call));
  const Unlocked away;
  auto last = std::move(call);
  return last();
}

/** Keeps an interrupt for whatever runs Python next. */
void raiseLater(pybind11::error_already_set& error);

/** Does the same where nothing may be raised: Ctrl-C ends the waiting and is raised afterwards. */
template <typename Call>
void quietly(Call call) try {
  patiently(std::move(call));
} catch (pybind11::error_already_set& error) {
  raiseLater(error);
}

/** Lets an object go, which may wait for hardware. */
template <typename Pointer>
void letGo(Pointer& pointer) {
  if (!pointer) return;
  quietly([last = std::exchange(pointer, Pointer())]() mutable { last.reset(); });
}

/** Calls `own` while other threads may run Python; it goes there, too, if it was the last. */
template <typename Own, typename Call>
auto askUnlocked(std::shared_ptr<Own> kept, Call call) {
  return unlocked([&] {
    const auto own = std::move(kept);
    return call(*own);
  });
}

/** Does the same for what may wait for hardware: Ctrl-C ends the waiting, and the call goes on with
 * what it owns. */
template <typename Own, typename Call>
auto askPatiently(std::shared_ptr<Own> own, Call call) {
  return patiently([own = std::move(own), call = std::move(call)] { return call(*own); });
}

}  // namespace QV::python
