#include "platform/ko/internal/simulated_scheduler.h"

#include <boost/make_shared.hpp>

#include "platform/ko/internal/time_source.h"

namespace ko::detail {
namespace {

thread_local int depth = 0;

struct DepthScope {
  DepthScope() { ++depth; }
  ~DepthScope() { --depth; }
};

struct PostedCall : Job {
  explicit PostedCall(boost::function<void()> call) : call(std::move(call)) {}
  void run(Clock::time_point) override { call(); }
  void drop() override {}
  boost::function<void()> call;
};

}  // namespace

SimulatedScheduler::SimulatedScheduler(Clock::time_point start) : current(start) {
  showSimulatedTime(start);
}

Clock::time_point SimulatedScheduler::now() const {
  std::lock_guard lock(mutex);
  return current;
}

void SimulatedScheduler::post(boost::function<void()> call) {
  schedule({now(), nextOrder()}, boost::make_shared<PostedCall>(std::move(call)));
}

bool SimulatedScheduler::schedule(const Turn& turn, boost::shared_ptr<Job> job) {
  std::lock_guard lock(mutex);
  if (!ended) queue.emplace(turn, std::move(job));
  return !ended;
}

void SimulatedScheduler::withdraw(const Turn& turn) {
  JobQueue::node_type taken;
  std::lock_guard lock(mutex);
  taken = queue.extract(turn);
}

void SimulatedScheduler::sleep(Duration duration) {
  const auto wakeUp = later(now(), duration);
  if (isOwner()) return advanceTo(wakeUp);
  std::unique_lock lock(mutex);
  if (ended || current >= wakeUp) return;
  sleepers.emplace(wakeUp, Sleeper{std::this_thread::get_id(), getHeld()});
  ++news;
  changed.notify_all();
  changed.wait(lock, [&] { return ended || current >= wakeUp; });
}

bool SimulatedScheduler::runNext() {
  return isOwner() && runNext(Clock::time_point::max());
}

bool SimulatedScheduler::runNext(Clock::time_point limit) {
  JobQueue::node_type next;
  {
    std::lock_guard lock(mutex);
    if (queue.empty() || queue.begin()->first.due > limit) return false;
    next = queue.extract(queue.begin());
  }
  xMoveTo(next.key().due);
  const DepthScope scope;
  next.mapped()->run(next.key().due);
  return true;
}

void SimulatedScheduler::advanceTo(Clock::time_point target) {
  while (runNext(target)) {
  }
  xMoveTo(target);
}

void SimulatedScheduler::awaitSleepers(std::size_t count) {
  std::unique_lock lock(mutex);
  changed.wait(lock, [&] { return sleepers.size() >= count; });
}

bool SimulatedScheduler::waitUntil(const std::function<bool()>& isOver,
                                   const SleeperTest& isAwaited) {
  std::unique_lock lock(mutex);
  while (!ended) {
    const auto seen = news;
    lock.unlock();
    if (isOver()) return true;
    lock.lock();
    if (const auto wakeUp = xFindWakeUp(isAwaited)) {
      lock.unlock();
      advanceTo(*wakeUp);
      lock.lock();
    } else {
      changed.wait(lock, [&] { return news != seen || ended; });
    }
  }
  return false;
}

void SimulatedScheduler::tellOwner() {
  {
    std::lock_guard lock(mutex);
    ++news;
  }
  changed.notify_all();
}

std::optional<Clock::time_point> SimulatedScheduler::xFindWakeUp(
    const SleeperTest& isAwaited) const {
  for (const auto& [wakeUp, sleeper] : sleepers) {
    if (isAwaited(sleeper)) return wakeUp;
  }
  return std::nullopt;
}

int SimulatedScheduler::getDepth() {
  return depth;
}

void SimulatedScheduler::end() {
  JobQueue dropped;
  {
    std::lock_guard lock(mutex);
    ended = true;
    dropped.swap(queue);
    sleepers.clear();
    showMachineTime();
  }
  changed.notify_all();
  for (const auto& [turn, job] : dropped) job->drop();
}

void SimulatedScheduler::xMoveTo(Clock::time_point time) {
  {
    std::lock_guard lock(mutex);
    if (ended || time <= current) return;
    current = time;
    showSimulatedTime(time);
    sleepers.erase(sleepers.begin(), sleepers.upper_bound(time));
  }
  changed.notify_all();
}

}  // namespace ko::detail
