#include "ros2/link/internal/heard_time.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <stdexcept>

#include "platform/ko/log.h"
#include "session/internal/number_text.h"
#include "session/internal/seconds.h"

namespace QV::ros2 {
namespace {

using session::fixed;
using session::inSeconds;

using MachineClock = std::chrono::steady_clock;

constexpr std::int64_t kSecond = 1'000'000'000;
constexpr ko::Duration kLongGap{60 * kSecond};
// Messages of /clock may come in another order than they were sent.
constexpr ko::Duration kLongStepBack{kSecond / 2};
constexpr ko::Duration kOldest{10 * kSecond};
constexpr ko::Duration kFarthestAhead{kSecond};

std::int64_t nanosecondsOf(const builtin_interfaces::Time& time) {
  return time.sec * kSecond + time.nanosec;
}

}  // namespace

void HeardTime::setClock(const builtin_interfaces::Time& time) {
  {
    const std::lock_guard lock(mutex);
    clock = nanosecondsOf(time);
    if (!left) return;
    // A last message may come after its publisher has gone, a first one before it is known.
    left = MachineClock::now();
    if (!isPublished) return;
    left.reset();
  }
  ko::log::info("ROS2.Time", "setClock") << "/clock: published again";
}

void HeardTime::setPublished(bool on) {
  {
    const std::lock_guard lock(mutex);
    isPublished = on;
    if (on || !clock || left) return;
    left = MachineClock::now();
  }
  ko::log::warning("ROS2.Time", "setPublished")
      << "/clock: nobody publishes it any more: time goes on by the machine's clock";
}

bool HeardTime::hasBegun() const {
  const std::lock_guard lock(mutex);
  return source == Source::wallClock || clock;
}

void HeardTime::begin(ko::Clock::time_point time) {
  const std::lock_guard lock(mutex);
  offset = xRead() - time.time_since_epoch().count();
  last = time;
}

std::int64_t HeardTime::xRead() const {
  using std::chrono::nanoseconds;
  if (source == Source::wallClock) {
    const auto wall = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<nanoseconds>(wall).count();
  }
  const nanoseconds since = left ? MachineClock::now() - *left : nanoseconds(0);
  return clock.value_or(0) + since.count();
}

ko::Clock::time_point HeardTime::now() {
  std::unique_lock lock(mutex);
  const std::int64_t there = xRead();
  const ko::Clock::time_point time{ko::Duration(there - offset)};
  const ko::Duration step = time - last;
  if (step >= -kLongStepBack && step <= kLongGap) return last = std::max(last, time);
  offset = there - last.time_since_epoch().count();
  const auto result = last;
  // Whoever hears the log may ask for the time.
  lock.unlock();
  ko::log::warning("ROS2.Time", "now")
      << "the clock of the graph has leapt by " << fixed(inSeconds(step), 1)
      << " s: time goes on from where it was";
  return result;
}

builtin_interfaces::Time HeardTime::getStamp() {
  const std::lock_guard lock(mutex);
  const std::int64_t there = xRead();
  return {static_cast<std::int32_t>(there / kSecond), static_cast<std::uint32_t>(there % kSecond)};
}

ko::Clock::time_point HeardTime::date(const builtin_interfaces::Time& stamp) {
  const auto now = ko::Clock::now();
  const std::int64_t there = nanosecondsOf(stamp);
  if (there == 0) return now;
  std::unique_lock lock(mutex);
  const ko::Clock::time_point time{ko::Duration(there - offset)};
  lock.unlock();
  const ko::Duration age = this->now() - time;
  if (age > kOldest || age < -kFarthestAhead)
    throw std::runtime_error("a stamp of the last 10 s expected, one " +
                             fixed(std::abs(inSeconds(age)), 1) +
                             (age > ko::Duration::zero() ? " s old" : " s ahead") + " given");
  return std::min(time, now);
}

}  // namespace QV::ros2
