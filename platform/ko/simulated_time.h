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
 * A time that its owner advances. While it exists, it controls ko::Clock, tasks, delayed calls,
 * posts and sleeps. Time stands still until the owner, the thread that created it, advances it. Due
 * calls then run on the owner's thread in the order of their times. Those of the same time run in
 * the order in which they were posted, delayed, or their tasks started. So the order is the same in
 * every run.
 *
 * - Lifetime: create it before robot and manager; destroy it after them. Calls that were started
 *   before it stay with the real clock and threads. Calls that still wait at its end never run:
 *   their futures count as cancelled, their tasks as stopped.
 * - Threads: only the owner calls it. A sleep on the owner's thread advances the time and runs due
 *   calls. A callback that sleeps is not entered again meanwhile. Sleeps on other threads end when
 *   the owner has advanced far enough, or when the SimulatedTime ends. If the owner waits for a
 *   task, a future or a sensor, and the thread that it waits for sleeps, then the time advances
 *   until that thread wakes. Callbacks may call all operations. But a callback may run inside the
 *   sleep of another call: an operation that needs a lock which that call holds throws an error.
 * - Errors: std::logic_error for a second one in the process, for an operation on another thread,
 *   and for a lock as above: the text names both calls.
 *
 * An hour of driving:
 *
 *     ko::SimulatedTime time;
 *     QV::robot::VirtualRobot porter("robot/descriptions/porter.urdf", map);
 *     porter.setVelocity(0.3f, 0.0f, 0.0f);
 *     time.advance(seconds(3600));
 */
class QV_API SimulatedTime {
 public:
  /** Takes over ko::Clock, whose time is `start` at first. */
  explicit SimulatedTime(Clock::time_point start = Clock::time_point());
  ~SimulatedTime();
  SimulatedTime(const SimulatedTime&) = delete;
  SimulatedTime& operator=(const SimulatedTime&) = delete;

  /** Advances by `duration`; throws std::invalid_argument if it is negative. */
  void advance(Duration duration);

  /**
   * Advances to `time`, or beyond it if a callback sleeps that long. Throws std::invalid_argument
   * for a time in the past.
   */
  void advanceTo(Clock::time_point time);

  /** Runs the calls that are due now, and those that they post. */
  void runDue();

  /** Advances call by call until `reached` returns true, at most for `limit`. Returns the last
   * result of `reached`. */
  bool runUntil(const boost::function<bool()>& reached, Duration limit);

  /** Waits, in real time, until at least `count` other threads sleep in simulated time. */
  void awaitSleepers(std::size_t count);

 private:
  void xCheckOwner() const;

  boost::shared_ptr<detail::SimulatedScheduler> scheduler;
};

}  // namespace ko
