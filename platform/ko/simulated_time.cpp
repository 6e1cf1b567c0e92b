#include "platform/ko/simulated_time.h"

#include <atomic>
#include <stdexcept>

#include <boost/make_shared.hpp>

#include "platform/ko/internal/log_console.h"
#include "platform/ko/internal/simulated_scheduler.h"
#include "platform/ko/internal/time_source.h"

namespace ko {
namespace {

std::atomic<bool> taken{false};

void checkNotNegative(Duration duration) {
  if (duration >= Duration::zero()) return;
  throw std::invalid_argument("SimulatedTime: time can't be advanced by a negative duration");
}

}  // namespace

SimulatedTime::SimulatedTime(Clock::time_point start) {
  if (taken.exchange(true))
    throw std::logic_error("SimulatedTime: the clock is already taken over");
  scheduler = boost::make_shared<detail::SimulatedScheduler>(start);
  detail::installScheduler(scheduler);
}

// It may end inside a call that it runs: whatever runs calls keeps the scheduler meanwhile.
SimulatedTime::~SimulatedTime() {
  // Later the lines would carry another clock's time.
  log::detail::flushRepeats();
  detail::installScheduler(nullptr);
  scheduler->end();
  taken = false;
}

void SimulatedTime::advance(Duration duration) {
  checkNotNegative(duration);
  xCheckOwner();
  const auto kept = scheduler;
  kept->advanceTo(detail::later(kept->now(), duration));
}

void SimulatedTime::advanceTo(Clock::time_point time) {
  xCheckOwner();
  if (time < scheduler->now())
    throw std::invalid_argument("SimulatedTime: time can't be moved back");
  const auto kept = scheduler;
  kept->advanceTo(time);
}

void SimulatedTime::runDue() {
  advance(Duration::zero());
}

bool SimulatedTime::runUntil(const boost::function<bool()>& reached, Duration limit) {
  checkNotNegative(limit);
  xCheckOwner();
  const auto kept = scheduler;
  const auto end = detail::later(kept->now(), limit);
  while (!reached()) {
    if (kept->runNext(end)) continue;
    kept->advanceTo(end);
    return reached();
  }
  return true;
}

void SimulatedTime::awaitSleepers(std::size_t count) {
  xCheckOwner();
  scheduler->awaitSleepers(count);
}

void SimulatedTime::xCheckOwner() const {
  if (scheduler->isOwner()) return;
  throw std::logic_error("SimulatedTime: only the thread that took the clock over may advance it");
}

}  // namespace ko
