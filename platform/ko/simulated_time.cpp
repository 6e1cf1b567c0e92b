#include "platform/ko/simulated_time.h"

#include <atomic>
#include <stdexcept>

#include "platform/ko/time_source.h"

namespace ko {
namespace {

std::atomic<bool> taken{false};

}  // namespace

SimulatedTime::SimulatedTime(Clock::time_point start) {
  if (taken.exchange(true))
    throw std::logic_error("SimulatedTime: the clock is already taken over");
  detail::showSimulatedTime(start);
}

SimulatedTime::~SimulatedTime() {
  detail::showMachineTime();
  taken = false;
}

void SimulatedTime::advance(Duration duration) {
  if (duration < Duration::zero()) {
    throw std::invalid_argument("SimulatedTime: time can't be advanced by a negative duration");
  }
  detail::showSimulatedTime(Clock::now() + duration);
}

}  // namespace ko
