#include "platform/ko/clock.h"

#include <chrono>

#include <boost/chrono/floor.hpp>

#include "platform/ko/time_source.h"

namespace ko {
namespace {

std::chrono::steady_clock::time_point processStart() noexcept {
  static const auto start = std::chrono::steady_clock::now();
  return start;
}

// Fixes the start when the library is loaded, not at the first question.
[[maybe_unused]] const auto loaded = processStart();

std::int64_t wholeMilliseconds(Clock::time_point time) noexcept {
  return boost::chrono::floor<boost::chrono::milliseconds>(time.time_since_epoch()).count();
}

}  // namespace

Clock::time_point Clock::now() noexcept {
  const auto simulated = detail::simulatedNow();
  if (simulated) return *simulated;
  const auto elapsed = std::chrono::steady_clock::now() - processStart();
  return time_point(Duration(std::chrono::nanoseconds(elapsed).count()));
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
  return time_point(boost::chrono::milliseconds(referenceMs + distance));
}

}  // namespace ko
