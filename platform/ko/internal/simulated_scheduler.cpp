#include "platform/ko/internal/simulated_scheduler.h"

#include <boost/make_shared.hpp>

#include "platform/ko/internal/time_source.h"

namespace ko::detail {
namespace {

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
  sleepers.insert(wakeUp);
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

void SimulatedScheduler::end() {
  JobQueue dropped;
  {
    std::lock_guard lock(mutex);
    ended = true;
    dropped.swap(queue);
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
