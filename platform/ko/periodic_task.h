#pragma once

#include <cstdint>
#include <string>

#include <boost/function.hpp>
#include <boost/shared_ptr.hpp>

#include "platform/api.h"
#include "platform/ko/clock.h"

namespace ko {

/**
 * Calls a function periodically on the threads of ko's pool. Several tasks may run at once, but
 * never two calls of one task. An exception of the callback is logged as an error of
 * "ko.PeriodicTask", and the task goes on. Thread-safe, also from the callback.
 *
 * Settings can be changed while the task is stopped; the setters throw std::logic_error otherwise.
 */
class QV_API PeriodicTask {
 public:
  PeriodicTask();
  /** Stops the task; what the callback held is gone. In simulated time, a task must not be
   * destroyed while its own callback sleeps: the callback would go on without its owner, so the
   * program ends with a line that names the task. */
  ~PeriodicTask();
  PeriodicTask(const PeriodicTask&) = delete;
  PeriodicTask& operator=(const PeriodicTask&) = delete;

  /** Sets the name that the log uses. */
  void setName(const std::string& name);
  void setCallback(boost::function<void()> callback);
  void setUsPeriod(std::int64_t microseconds);
  void setPeriod(Duration period);

  /**
   * Off (the default): a run starts one period after the end of the last one. On: runs start one
   * period apart, or at once after a run that took longer; missed runs are not made up.
   */
  void compensateCallbackTime(bool compensate);

  /**
   * Starts the task, or starts it anew. The first run comes at once if `immediate`, otherwise after
   * one period. Throws std::logic_error without a callback, std::invalid_argument for a period that
   * is not positive.
   */
  void start(bool immediate);

  /** Stops the task. Waits for a running callback, unless called from it. No run starts after. */
  void stop();

  /** True from `start` to `stop`, also between the runs. */
  bool isRunning() const;

  class Impl;

 private:
  boost::shared_ptr<Impl> impl;
};

}  // namespace ko
