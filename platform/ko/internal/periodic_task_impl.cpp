#include "platform/ko/internal/periodic_task_impl.h"

#include <algorithm>
#include <utility>

#include <boost/make_shared.hpp>

#include "platform/ko/internal/time_source.h"

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
  const auto run = runs;
  if (runner == std::this_thread::get_id()) return;
  changed.wait(lock, [&] { return !busy || runs != run; });
}

bool PeriodicTask::Impl::isRunning() const {
  std::lock_guard lock(mutex);
  return started;
}

void PeriodicTask::Impl::run(std::uint64_t which, Clock::time_point due) {
  // Copies, because a callback may stop its task and change the settings.
  const Call call = xBegin(which);
  if (!call.callback) return;
  detail::callGuarded(*call.callback, "ko.PeriodicTask", "run", call.prefix);
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
}

Clock::time_point PeriodicTask::Impl::xNextDue(Clock::time_point due) const {
  const auto now = scheduler->now();
  return compensate ? std::max(detail::later(due, period), now) : detail::later(now, period);
}

}  // namespace ko
