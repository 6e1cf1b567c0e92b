#pragma once

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "platform/ko/internal/scheduler.h"

namespace ko::detail {

/**
 * The state of one delayed call, which all copies of a future share.
 */
class FutureState : public Job {
 public:
  FutureState(boost::function<void()> call, boost::shared_ptr<Scheduler> scheduler, Duration delay);

  static boost::shared_ptr<FutureState> start(boost::function<void()> call, Duration delay);

  void run(Clock::time_point due) override;
  void drop() override { cancel(); }

  void cancel();
  void wait();
  bool isFinished() const { return xIs(Stage::finished); }
  bool isCanceled() const { return xIs(Stage::canceled); }

 private:
  enum class Stage { waiting, running, finished, canceled };

  bool xIs(Stage asked) const;
  bool xIsOver() const { return stage == Stage::finished || stage == Stage::canceled; }
  bool xMustWait() const;

  const boost::shared_ptr<Scheduler> scheduler;
  const Turn turn;
  mutable std::mutex mutex;
  std::condition_variable changed;
  Stage stage = Stage::waiting;
  std::atomic<std::thread::id> runner{};
  boost::function<void()> call;
};

}  // namespace ko::detail
