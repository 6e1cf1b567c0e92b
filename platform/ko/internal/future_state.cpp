#include "platform/ko/internal/future_state.h"

#include <stdexcept>

#include <boost/make_shared.hpp>

#include "platform/ko/internal/owner_wait.h"
#include "platform/ko/internal/time_source.h"

namespace ko::detail {

FutureState::FutureState(boost::function<void()> call, boost::shared_ptr<Scheduler> scheduler,
                         Duration delay)
    : scheduler(std::move(scheduler)),
      turn{later(this->scheduler->now(), delay), nextOrder()},
      call(std::move(call)) {}

boost::shared_ptr<FutureState> FutureState::start(boost::function<void()> call, Duration delay) {
  auto state = boost::make_shared<FutureState>(std::move(call), currentScheduler(), delay);
  if (!state->scheduler->schedule(state->turn, state)) state->drop();
  return state;
}

void FutureState::run(Clock::time_point) {
  boost::function<void()> taken;
  {
    std::lock_guard lock(mutex);
    if (stage != Stage::waiting) return;
    stage = Stage::running;
    runner = std::this_thread::get_id();
    taken.swap(call);
  }
  callGuarded(taken, "ko.EventLoop", "asyncDelay");
  taken.clear();
  {
    std::lock_guard lock(mutex);
    stage = Stage::finished;
    runner = std::thread::id();
  }
  changed.notify_all();
  tellOwner();
}

void FutureState::cancel() {
  boost::function<void()> released;
  {
    std::lock_guard lock(mutex);
    if (stage != Stage::waiting) return;
    stage = Stage::canceled;
    released.swap(call);
  }
  changed.notify_all();
  tellOwner();
  scheduler->withdraw(turn);
}

void FutureState::wait() {
  while (xMustWait() && scheduler->runNext()) {
  }
  const auto isOver = [this] {
    std::lock_guard look(mutex);
    return xIsOver();
  };
  const auto isAwaited = [this](const Sleeper& sleeper) { return sleeper.thread == runner; };
  if (waitAsOwner(isOver, isAwaited)) return;
  std::unique_lock lock(mutex);
  changed.wait(lock, [this] { return xIsOver(); });
}

bool FutureState::xIs(Stage asked) const {
  std::lock_guard lock(mutex);
  return stage == asked;
}

bool FutureState::xMustWait() const {
  std::lock_guard lock(mutex);
  if (runner == std::this_thread::get_id())
    throw std::logic_error("Future: the call to wait for is running on this thread");
  return !xIsOver();
}

}  // namespace ko::detail
