#include "platform/ko/internal/strand.h"

#include <condition_variable>
#include <deque>
#include <limits>
#include <mutex>
#include <stdexcept>
#include <thread>

#include <boost/make_shared.hpp>

#include "platform/ko/internal/owner_wait.h"
#include "platform/ko/internal/scheduler.h"

namespace ko {
namespace {

// A busy strand gives its thread to others after so many calls.
constexpr int kCallsPerTurn = 64;

}  // namespace

class Strand::State {
 public:
  /** Queues `call`; true if nobody is there to run it, so that the caller must see to that. */
  bool add(boost::function<void()> call);

  /** Runs up to `limit` calls in order; true if there are more. */
  bool run(int limit);

  void stop();

 private:
  bool xTakeNext(boost::function<void()>& call);
  /** Rests; call it with the lock. */
  void xRest();

  std::mutex mutex;
  std::condition_variable changed;
  std::deque<boost::function<void()>> queue;
  bool attended = false;
  bool stopped = false;
  bool busy = false;
  std::thread::id runner;
};

bool Strand::State::add(boost::function<void()> call) {
  std::lock_guard lock(mutex);
  if (stopped) return false;
  queue.push_back(std::move(call));
  return !std::exchange(attended, true);
}

bool Strand::State::run(int limit) {
  boost::function<void()> call;
  for (int i = 0; i < limit; ++i) {
    if (!xTakeNext(call)) return false;
    detail::callGuarded(call, "ko.Strand", "post");
    call.clear();
  }
  std::lock_guard lock(mutex);
  xRest();
  return true;
}

// The same lock covers the end of a call and the beginning of the next.
bool Strand::State::xTakeNext(boost::function<void()>& call) {
  std::lock_guard lock(mutex);
  attended = !queue.empty();
  if (!attended) {
    xRest();
    return false;
  }
  call.swap(queue.front());
  queue.pop_front();
  busy = true;
  runner = std::this_thread::get_id();
  return true;
}

void Strand::State::xRest() {
  busy = false;
  runner = std::thread::id();
  changed.notify_all();
  detail::tellOwner();
}

void Strand::State::stop() {
  std::deque<boost::function<void()>> dropped;
  {
    std::lock_guard lock(mutex);
    stopped = true;
    dropped.swap(queue);
  }
  dropped.clear();
  std::unique_lock lock(mutex);
  if (!busy || runner == std::this_thread::get_id()) return;
  const auto isOver = [this] {
    std::lock_guard look(mutex);
    return !busy;
  };
  const auto awaited = detail::sleepOf(runner);
  lock.unlock();
  if (detail::waitAsOwner(isOver, awaited)) return;
  lock.lock();
  changed.wait(lock, [this] { return !busy; });
}

namespace {

void runOnPool(const boost::shared_ptr<Strand::State>& state,
               const boost::shared_ptr<detail::Scheduler>& scheduler) {
  scheduler->post([state, scheduler] {
    if (state->run(kCallsPerTurn)) runOnPool(state, scheduler);
  });
}

// Each call has its own place in simulated time, between the calls of others.
void runInItsTurn(const boost::shared_ptr<Strand::State>& state, boost::function<void()> call,
                  detail::Scheduler& scheduler) {
  scheduler.post([state, call = std::move(call)] {
    if (state->add(call)) state->run(std::numeric_limits<int>::max());
  });
}

}  // namespace

Strand::Strand() : state(boost::make_shared<State>()) {}

Strand::~Strand() {
  stop();
}

void Strand::post(boost::function<void()> call) {
  if (!call) throw std::invalid_argument("Strand: there is no function to call");
  const auto scheduler = detail::currentScheduler();
  if (scheduler->isSimulated()) {
    runInItsTurn(state, std::move(call), *scheduler);
  } else if (state->add(std::move(call))) {
    runOnPool(state, scheduler);
  }
}

void Strand::stop() {
  state->stop();
}

}  // namespace ko
