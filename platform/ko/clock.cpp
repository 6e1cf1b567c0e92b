#include "platform/ko/clock.h"

#include <algorithm>

#include <boost/chrono/floor.hpp>

#include "platform/ko/internal/scheduler.h"
#include "platform/ko/internal/time_source.h"

namespace ko {
namespace {

std::int64_t wholeMilliseconds(Clock::time_point time) noexcept {
  return boost::chrono::floor<boost::chrono::milliseconds>(time.time_since_epoch()).count();
}

}  // namespace

Clock::time_point Clock::now() noexcept {
  const auto simulated = detail::simulatedNow();
  return simulated ? *simulated : detail::machineNow();
}

std::int32_t Clock::toInt32ms(time_point time) noexcept {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(wholeMilliseconds(time)));
}

Clock::time_point Clock::fromInt32ms(std::int32_t ms) noexcept {
  return fromInt32ms(ms, now(), 0);
}

Clock::time_point Clock::fromInt32ms(std::int32_t ms, time_point reference,
                                     std::int32_t offsetMs) noexcept {
  const std::int64_t referenceMs = wholeMilliseconds(reference);
  const std::uint32_t wanted =
      static_cast<std::uint32_t>(ms) - static_cast<std::uint32_t>(offsetMs);
  const auto distance = static_cast<std::int32_t>(wanted - static_cast<std::uint32_t>(referenceMs));
  constexpr std::int64_t kMostMs = Duration::max().count() / 1'000'000;
  return time_point(
      boost::chrono::milliseconds(std::clamp(referenceMs + distance, -kMostMs, kMostMs)));
}

}  // namespace ko

namespace ko::os {

void msleep(int milliseconds) {
  if (milliseconds <= 0) return;
  detail::currentScheduler()->sleep(boost::chrono::milliseconds(milliseconds));
}

}  // namespace ko::os
