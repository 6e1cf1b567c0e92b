#include "platform/ko/internal/periodic_task_impl.h"

#include <algorithm>
#include <utility>

#include <boost/make_shared.hpp>

#include "platform/ko/internal/owner_wait.h"
#include "platform/ko/internal/simulated_scheduler.h"
#include "platform/ko/internal/time_source.h"
#include "platform/ko/log.h"

namespace ko {
namespace {

struct Run : detail::Job {
  Run(boost::shared_ptr<PeriodicTask::Impl> task, std::uint64_t which)
      : task(std::move(task)), which(which) {}
  void run(Clock::time_point due) override { task->run(which, due); }
  void drop() override { task->drop(which); }

  boost::shared_ptr<PeriodicTask::Impl> task;
  std::uint64_t which;
};

}  // namespace

void PeriodicTask::Impl::start(bool immediate) {
  std::lock_guard lock(mutex);
  xCheckSettings();
  if (started) scheduler->withdraw(next);
  started = true;
  overdue = false;
  ++series;
  scheduler = detail::currentScheduler();
  next.order = detail::nextOrder();
  const auto now = scheduler->now();
  xSchedule(immediate ? now : detail::later(now, period));
}

void PeriodicTask::Impl::stop() {
  std::unique_lock lock(mutex);
  if (started) scheduler->withdraw(next);
  started = false;
  overdue = false;
  ++series;
  const auto isOver = [this, run = runs] { return !busy || runs != run; };
  if (isOver() || runner == std::this_thread::get_id()) return;
  const auto awaited = detail::sleepOf(runner);
  lock.unlock();
  const auto looksOver = [&] {
    std::lock_guard look(mutex);
    return isOver();
  };
  if (detail::waitAsOwner(looksOver, awaited)) return;
  lock.lock();
  changed.wait(lock, isOver);
}

void PeriodicTask::Impl::retire() {
  stop();
  boost::shared_ptr<const boost::function<void()>> released;
  std::lock_guard lock(mutex);
  xCheckNotAsleep();
  released.swap(callback);
}

// Such a callback would go on after its sleep, with an owner that is gone.
void PeriodicTask::Impl::xCheckNotAsleep() const {
  const bool asleep = busy && runner == std::this_thread::get_id() &&
                      detail::SimulatedScheduler::getDepth() > depth;
  if (!asleep) return;
  log::fatal("ko.PeriodicTask", "~PeriodicTask")
      << name << ": destroyed by a call that runs inside a sleep of the task's own callback";
  std::terminate();
}

bool PeriodicTask::Impl::isRunning() const {
  std::lock_guard lock(mutex);
  return started;
}

void PeriodicTask::Impl::run(std::uint64_t which, Clock::time_point due) {
  // Copies, because a callback may stop its task and change the settings.
  Call call = xBegin(which);
  if (!call.callback) return;
  detail::callGuarded(*call.callback, "ko.PeriodicTask", "run", call.prefix);
  // What it holds is gone before those who stop the task go on.
  call.callback.reset();
  xFinish(which, due);
}

void PeriodicTask::Impl::drop(std::uint64_t which) {
  std::lock_guard lock(mutex);
  if (which == series) started = false;
}

void PeriodicTask::Impl::xCheckSettings() const {
  if (!callback || !*callback)
    throw std::logic_error("PeriodicTask " + name + ": there is no callback to start");
  if (period > Duration::zero()) return;
  throw std::invalid_argument("PeriodicTask " + name + ": the period must be positive, not " +
                              std::to_string(period.count()) + " ns");
}

void PeriodicTask::Impl::xSchedule(Clock::time_point due) {
  next.due = due;
  started = scheduler->schedule(next, boost::make_shared<Run>(shared_from_this(), series));
}

PeriodicTask::Impl::Call PeriodicTask::Impl::xBegin(std::uint64_t which) {
  std::lock_guard lock(mutex);
  if (which != series) return {};
  if (busy) {
    overdue = true;
    return {};
  }
  busy = true;
  runner = std::this_thread::get_id();
  depth = detail::SimulatedScheduler::getDepth();
  return {callback, name + ": "};
}

void PeriodicTask::Impl::xFinish(std::uint64_t which, Clock::time_point due) {
  {
    std::lock_guard lock(mutex);
    busy = false;
    runner = std::thread::id();
    ++runs;
    if (std::exchange(overdue, false)) {
      xSchedule(scheduler->now());
    } else if (which == series) {
      xSchedule(xNextDue(due));
    }
  }
  changed.notify_all();
  detail::tellOwner();
}

Clock::time_point PeriodicTask::Impl::xNextDue(Clock::time_point due) const {
  const auto now = scheduler->now();
  return compensate ? std::max(detail::later(due, period), now) : detail::later(now, period);
}

}  // namespace ko
