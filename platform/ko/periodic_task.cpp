#include "platform/ko/periodic_task.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <stdexcept>
#include <thread>

#include <boost/make_shared.hpp>
#include <boost/smart_ptr/enable_shared_from_this.hpp>

#include "platform/ko/internal/scheduler.h"
#include "platform/ko/internal/time_source.h"

namespace ko {

using detail::Turn;

class PeriodicTask::Impl : public boost::enable_shared_from_this<PeriodicTask::Impl> {
 public:
  /** Applies `change` to the settings. */
  template <typename Change>
  void configure(Change change);

  void start(bool immediate);
  void stop();
  bool isRunning() const;

  /** Runs the series `which` once; does nothing if that was stopped. */
  void run(std::uint64_t which, Clock::time_point due);
  void drop(std::uint64_t which);

  std::string name;
  boost::shared_ptr<const boost::function<void()>> callback;
  Duration period = Duration::zero();
  bool compensate = false;

 private:
  void xCheckSettings() const;
  void xSchedule(Clock::time_point due);
  boost::function<void()> xBegin(std::uint64_t which);
  void xFinish(std::uint64_t which, Clock::time_point due);
  Clock::time_point xNextDue(Clock::time_point due) const;

  mutable std::mutex mutex;
  std::condition_variable changed;
  bool started = false;
  // Each start and stop counts, so that runs under way of a series that was stopped are known.
  std::uint64_t series = 0;
  boost::shared_ptr<detail::Scheduler> scheduler;
  Turn next;
  bool busy = false;
  // A run fell due while one of a former series was busy.
  bool overdue = false;
  std::uint64_t runs = 0;
  std::thread::id runner;
};

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

template <typename Change>
void PeriodicTask::Impl::configure(Change change) {
  std::lock_guard lock(mutex);
  if (started) {
    throw std::logic_error("PeriodicTask " + name + ": settings can't be changed while it runs");
  }
  change();
}

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
  if (const auto call = xBegin(which)) {
    call();
    xFinish(which, due);
  }
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

boost::function<void()> PeriodicTask::Impl::xBegin(std::uint64_t which) {
  std::lock_guard lock(mutex);
  if (which != series) return {};
  if (busy) {
    overdue = true;
    return {};
  }
  busy = true;
  runner = std::this_thread::get_id();
  // Copies, because a callback may stop its task and change the settings.
  return [callback = callback, prefix = name + ": "] {
    detail::callGuarded(*callback, "ko.PeriodicTask", "run", prefix);
  };
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

PeriodicTask::PeriodicTask() : impl(boost::make_shared<Impl>()) {}

PeriodicTask::~PeriodicTask() {
  stop();
}

void PeriodicTask::setName(const std::string& name) {
  impl->configure([&] { impl->name = name; });
}

void PeriodicTask::setCallback(boost::function<void()> callback) {
  auto shared = boost::make_shared<const boost::function<void()>>(std::move(callback));
  // The former one goes after the lock: what it captured may call back.
  impl->configure([&] { impl->callback.swap(shared); });
}

void PeriodicTask::setUsPeriod(std::int64_t microseconds) {
  const std::int64_t longest = Duration::max().count() / 1000;
  setPeriod(boost::chrono::microseconds(std::clamp(microseconds, -longest, longest)));
}

void PeriodicTask::setPeriod(Duration period) {
  impl->configure([&] { impl->period = period; });
}

void PeriodicTask::compensateCallbackTime(bool compensate) {
  impl->configure([&] { impl->compensate = compensate; });
}

void PeriodicTask::start(bool immediate) {
  impl->start(immediate);
}

void PeriodicTask::stop() {
  impl->stop();
}

bool PeriodicTask::isRunning() const {
  return impl->isRunning();
}

}  // namespace ko
