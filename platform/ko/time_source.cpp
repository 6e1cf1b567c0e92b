#include "platform/ko/time_source.h"

#include <atomic>
#include <limits>

namespace ko::detail {
namespace {

constexpr std::int64_t kMachineTime = std::numeric_limits<std::int64_t>::min();
std::atomic<std::int64_t> shown{kMachineTime};

}  // namespace

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

}  // namespace ko::detail
