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
 * posts and sleeps. Due calls run on the owner's thread in the order of their times; those of the
 * same time, in the order in which they were posted, delayed, or their tasks started. So the order
 * is the same in every run.
 * - Lifetime: create it before robot and manager; destroy it after them. Calls from before stay
 *   with the real clock and threads. Calls that still wait at its end never run: their futures
 *   count as cancelled, their tasks as stopped.
 * - Threads: only the owner, the thread that created it, calls it. A sleep on that thread advances
 *   the time and runs due calls, but does not enter a callback that sleeps. A sleep on another
 *   thread ends when the time is reached, or with the SimulatedTime. If the owner waits for a task,
 *   a future or a sensor whose thread sleeps, the time advances until that wakes.
 * - Errors: std::logic_error for a second one in the process, and on another thread. A callback may
 *   call all operations. But it may run inside the sleep of another call: if it needs a lock which
 *   that call holds, it gets a std::logic_error that names both.
 *
 *     ko::SimulatedTime time;
 *     QV::robot::VirtualRobot porter("robot/descriptions/porter.urdf", map);
 *     porter.setVelocity(0.3f, 0.0f, 0.0f);
 *     time.advance(boost::chrono::seconds(3600));
 */
class QV_API SimulatedTime {
 public:
  /** Takes over ko::Clock, whose time is `start` at first. */
  explicit SimulatedTime(Clock::time_point start = Clock::time_point());
  ~SimulatedTime();
  SimulatedTime(const SimulatedTime&) = delete;
  SimulatedTime& operator=(const SimulatedTime&) = delete;

  /** Advances by `duration`; std::invalid_argument if it is negative. */
  void advance(Duration duration);

  /** Advances to `time`, or beyond it if a callback sleeps that long. std::invalid_argument for a
   * past time. */
  void advanceTo(Clock::time_point time);

  /** Runs the calls that are due now, and those that they post. */
  void runDue();

  /** Advances call by call until `reached` is true, at most for `limit`. Returns its last
   * result. */
  bool runUntil(const boost::function<bool()>& reached, Duration limit);

  /** Waits, in real time, until so many other threads sleep in simulated time. */
  void awaitSleepers(std::size_t count);

 private:
  void xCheckOwner() const;

  boost::shared_ptr<detail::SimulatedScheduler> scheduler;
};

}  // namespace ko
