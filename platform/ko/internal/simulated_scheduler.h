#pragma once

#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <thread>

#include "platform/ko/internal/owner_wait.h"
#include "platform/ko/internal/scheduler.h"

namespace ko::detail {

/** A time that stands still until its owner, the thread that created it, advances it. */
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

  /** Returns how many jobs this thread is running, one inside the sleep of the other. */
  static int getDepth();

  /** Advances to the next job up to `limit` and runs it; false if there is none. Owner only. */
  bool runNext(Clock::time_point limit);

  /** Runs the jobs that are due up to `target` and stops there, or later if a job slept. Owner
   * only. */
  void advanceTo(Clock::time_point target);

  /** Waits until at least `count` other threads sleep beyond the present time. */
  void awaitSleepers(std::size_t count);

  /** As detail::waitAsOwner() on the owner's thread. */
  bool waitUntil(const std::function<bool()>& isOver, const SleeperTest& isAwaited);
  void tellOwner();

  /** Drops waiting jobs, wakes the sleepers, and accepts no more jobs. */
  void end();

 private:
  void xMoveTo(Clock::time_point time);
  std::optional<Clock::time_point> xFindWakeUp(const SleeperTest& isAwaited) const;

  const std::thread::id owner = std::this_thread::get_id();
  mutable std::mutex mutex;
  std::condition_variable changed;
  Clock::time_point current;
  JobQueue queue;
  std::multimap<Clock::time_point, Sleeper> sleepers;
  /** Counts what a waiting owner must look at. */
  std::uint64_t news = 0;
  bool ended = false;
};

}  // namespace ko::detail
