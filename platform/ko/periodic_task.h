#pragma once

#include <cstdint>
#include <string>

#include <boost/function.hpp>
#include <boost/shared_ptr.hpp>

#include "platform/api.h"
#include "platform/ko/clock.h"

namespace ko {

/**
 * Calls a function again and again on the event loop's threads, with no strand; never two calls of
 * one task at once. What the callback throws is logged at error level, category "ko.PeriodicTask",
 * and the task goes on. Thread-safe, the callback included.
 *
 * Settings can be changed while the task is stopped; the setters throw std::logic_error otherwise.
 */
class QV_API PeriodicTask {
 public:
  PeriodicTask();
  /** Stops. */
  ~PeriodicTask();
  PeriodicTask(const PeriodicTask&) = delete;
  PeriodicTask& operator=(const PeriodicTask&) = delete;

  /** Sets the name that the log uses. */
  void setName(const std::string& name);
  void setCallback(boost::function<void()> callback);
  void setUsPeriod(std::int64_t microseconds);
  void setPeriod(Duration period);

  /**
   * Off at first: a run starts one period after the former one has ended. On: runs start one period
   * apart, or at once after a run that took longer; missed runs are not made up.
   */
  void compensateCallbackTime(bool compensate);

  /**
   * The first run comes at once if `immediate`, else after one period. A running task starts anew.
   * Throws std::logic_error without a callback, std::invalid_argument for a period that is not
   * positive.
   */
  void start(bool immediate);

  /** Waits for a running callback, unless it is called from that. No run starts afterwards. */
  void stop();

  /** True from `start` to `stop`, also between the runs. */
  bool isRunning() const;

  class Impl;

 private:
  boost::shared_ptr<Impl> impl;
};

}  // namespace ko
