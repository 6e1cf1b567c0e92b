#pragma once

#include <condition_variable>
#include <mutex>
#include <set>
#include <thread>

#include "platform/ko/internal/scheduler.h"

namespace ko::detail {

/** Time that stands still until its owner, the thread that made it, moves it on. */
class SimulatedScheduler : public Scheduler {
 public:
  explicit SimulatedScheduler(Clock::time_point start);

  bool isSimulated() const override { return true; }
  Clock::time_point now() const override;
  void post(boost::function<void()> call) override;
  bool schedule(const Turn& turn, boost::shared_ptr<Job> job) override;
  void withdraw(const Turn& turn) override;
  void sleep(Duration duration) override;
  bool runNext() override;

  bool isOwner() const { return std::this_thread::get_id() == owner; }

  /** Moves on to the next job up to `limit` and runs it; false if there is none. Owner only. */
  bool runNext(Clock::time_point limit);

  /** Runs what is due up to `target` and stops there, or later if a job went further. Owner only.
   */
  void advanceTo(Clock::time_point target);

  /** Waits until at least `count` other threads sleep beyond the present time. */
  void awaitSleepers(std::size_t count);

  /** Drops what waits, releases the sleepers, and takes nothing from now on. */
  void end();

 private:
  void xMoveTo(Clock::time_point time);

  const std::thread::id owner = std::this_thread::get_id();
  mutable std::mutex mutex;
  std::condition_variable changed;
  Clock::time_point current;
  JobQueue queue;
  std::multiset<Clock::time_point> sleepers;
  bool ended = false;
};

}  // namespace ko::detail
