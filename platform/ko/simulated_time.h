#pragma once

#include <cstddef>

#include <boost/function.hpp>
#include <boost/shared_ptr.hpp>

#include "platform/ko/clock.h"

namespace ko {

namespace detail {
class SimulatedScheduler;
}

/**
 * Takes over ko::Clock, tasks, delayed calls, posts and sleeps for its life: time stands still
 * until the owner, the thread that made it, advances it. What falls due then runs on the owner's
 * thread, in order of time and, at the same time, of start: the same every time.
 *
 * A sleep on the owner's thread advances the time and runs what falls due, but for calls that are
 * running already: a callback that sleeps is never entered again. Sleeps on other threads end when
 * the owner has advanced far enough, or when the scope ends.
 *
 * What was started before the scope stays with the machine's clock and threads. What still waits
 * when the scope ends never runs: its futures count as cancelled, its tasks as stopped.
 *
 * One at a time in a process: a second one throws std::logic_error, and so does an operation called
 * on another thread than the owner's. An operation may be called from a callback.
 */
class QV_API SimulatedTime {
 public:
  explicit SimulatedTime(Clock::time_point start = Clock::time_point());
  ~SimulatedTime();
  SimulatedTime(const SimulatedTime&) = delete;
  SimulatedTime& operator=(const SimulatedTime&) = delete;

  /** Moves time on by `duration`; a negative one throws std::invalid_argument. */
  void advance(Duration duration);

  /**
   * Moves time on to `time`, or beyond it if a callback sleeps that long; a time in the past throws
   * std::invalid_argument.
   */
  void advanceTo(Clock::time_point time);

  /** Runs what is due now, and what that posts. */
  void runDue();

  /**
   * Runs what falls due, one after the other, until `reached` says yes; at most for `limit`, and
   * the time then stands there. Returns the last answer.
   */
  bool runUntil(const boost::function<bool()>& reached, Duration limit);

  /** Waits, in the machine's time, until at least `count` other threads sleep in simulated time. */
  void awaitSleepers(std::size_t count);

 private:
  void xCheckOwner() const;

  boost::shared_ptr<detail::SimulatedScheduler> scheduler;
};

}  // namespace ko
