#pragma once

#include <condition_variable>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>

#include <boost/shared_ptr.hpp>
#include <boost/smart_ptr/enable_shared_from_this.hpp>

#include "platform/ko/internal/scheduler.h"
#include "platform/ko/periodic_task.h"

namespace ko {

class PeriodicTask::Impl : public boost::enable_shared_from_this<PeriodicTask::Impl> {
 public:
  /** Applies `change` to the settings. */
  template <typename Change>
  void configure(Change change);

  void start(bool immediate);
  void stop();
  /** Stops it for good, and releases the callback. */
  void retire();
  bool isRunning() const;

  /** Runs the series `which` once; does nothing if that was stopped. */
  void run(std::uint64_t which, Clock::time_point due);
  void drop(std::uint64_t which);

  std::string name;
  boost::shared_ptr<const boost::function<void()>> callback;
  Duration period = Duration::zero();
  bool compensate = false;

 private:
  struct Call {
    boost::shared_ptr<const boost::function<void()>> callback;
    std::string prefix;
  };

  void xCheckSettings() const;
  void xCheckNotAsleep() const;
  void xSchedule(Clock::time_point due);
  /** Returns no callback if the series was stopped, or another run is busy. */
  Call xBegin(std::uint64_t which);
  void xFinish(std::uint64_t which, Clock::time_point due);
  Clock::time_point xNextDue(Clock::time_point due) const;

  mutable std::mutex mutex;
  std::condition_variable changed;
  bool started = false;
  // Each start and stop counts, so that runs under way of a series that was stopped are known.
  std::uint64_t series = 0;
  boost::shared_ptr<detail::Scheduler> scheduler;
  detail::Turn next;
  bool busy = false;
  // A run fell due while one of a former series was busy.
  bool overdue = false;
  std::uint64_t runs = 0;
  std::thread::id runner;
  /** The jobs that the runner was running when it began. */
  int depth = 0;
};

template <typename Change>
void PeriodicTask::Impl::configure(Change change) {
  std::lock_guard lock(mutex);
  if (started) {
    throw std::logic_error("PeriodicTask " + name + ": settings can't be changed while it runs");
  }
  change();
}

}  // namespace ko
