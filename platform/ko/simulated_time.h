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
 * A time that its owner moves. For its life it takes over ko::Clock, tasks, delayed calls, posts
 * and sleeps: time stands still until the owner, the thread that made it, advances it. What falls
 * due then runs on the owner's thread, in order of time and, at the same time, of start: the same
 * every time.
 *
 * - Lifetime: make it first, then robot and manager; let it end last. What was started before it
 *   stays with the machine's clock and threads. What still waits when it ends never runs: its
 *   futures count as cancelled, its tasks as stopped.
 * - Threads: for its owner. A sleep on the owner's thread advances the time and runs what falls
 *   due, but for calls that are running already: a callback that sleeps is never entered again.
 *   Sleeps on other threads end when the owner has advanced far enough, or when the scope ends. An
 *   operation may be called from a callback.
 * - Errors: a second one in the process throws std::logic_error, and so does an operation on
 *   another thread.
 *
 * An hour in a moment:
 *
 *     ko::SimulatedTime time;
 *     QV::robot::VirtualRobot porter("robot/descriptions/porter.urdf", map);
 *     porter.setVelocity(0.3f, 0.0f, 0.0f);
 *     time.advance(seconds(3600));
 */
class QV_API SimulatedTime {
 public:
  /** Takes over, with this time as the present. */
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

  /** Runs what falls due, one after the other, until `reached` says yes; at most for `limit`,
   * and the time then stands there. Returns the last answer of `reached`. */
  bool runUntil(const boost::function<bool()>& reached, Duration limit);

  /** Waits, in the machine's time, until at least `count` other threads sleep in simulated time. */
  void awaitSleepers(std::size_t count);

 private:
  void xCheckOwner() const;

  boost::shared_ptr<detail::SimulatedScheduler> scheduler;
};

}  // namespace ko
