#include "platform/ko/internal/time_source.h"

#include <atomic>
#include <chrono>
#include <ctime>
#include <limits>

namespace ko::detail {
namespace {

constexpr std::int64_t kMachineTime = std::numeric_limits<std::int64_t>::min();
std::atomic<std::int64_t> shown{kMachineTime};

std::chrono::steady_clock::time_point processStart() noexcept {
  static const auto start = std::chrono::steady_clock::now();
  return start;
}

// Fixes the start when the library is loaded, not at the first question.
[[maybe_unused]] const auto loaded = processStart();

}  // namespace

Clock::time_point machineNow() noexcept {
  const auto elapsed = std::chrono::steady_clock::now() - processStart();
  return Clock::time_point(Duration(std::chrono::nanoseconds(elapsed).count()));
}

Clock::time_point coarseNow() noexcept {
  if (const auto simulated = simulatedNow()) return *simulated;
  std::timespec ticked;
  clock_gettime(CLOCK_MONOTONIC_COARSE, &ticked);
  const auto time = std::chrono::seconds(ticked.tv_sec) + std::chrono::nanoseconds(ticked.tv_nsec);
  const auto elapsed = std::chrono::steady_clock::time_point(time) - processStart();
  return Clock::time_point(Duration(std::chrono::nanoseconds(elapsed).count()));
}

std::optional<Clock::time_point> simulatedNow() noexcept {
  const std::int64_t nanoseconds = shown.load(std::memory_order_acquire);
  if (nanoseconds == kMachineTime) return std::nullopt;
  return Clock::time_point(Duration(nanoseconds));
}

void showSimulatedTime(Clock::time_point now) noexcept {
  shown.store(now.time_since_epoch().count(), std::memory_order_release);
}

void showMachineTime() noexcept {
  shown.store(kMachineTime, std::memory_order_release);
}

Clock::time_point later(Clock::time_point time, Duration duration) noexcept {
  const bool inRange = time.time_since_epoch() <= Duration::zero() ||
                       duration <= Duration::max() - time.time_since_epoch();
  return inRange ? time + duration : Clock::time_point::max();
}

}  // namespace ko::detail
