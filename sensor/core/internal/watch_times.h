#pragma once

#include <cstdint>

#include "platform/ko/clock.h"

/** The times that health is kept in, ns; in notes, 0 stands for never. */
namespace QV::sensor {

/** As long as all is well, one reading within this time is examined. */
constexpr std::int64_t kExaminePeriod = 500'000'000;
/** As long as the points stay the same, and of large records always. */
constexpr std::int64_t kSuspectPeriod = 250'000'000;

inline std::int64_t inNs(ko::Clock::time_point time) {
  return time.time_since_epoch().count();
}

inline double secondsBetween(ko::Clock::time_point from, ko::Clock::time_point to) {
  return boost::chrono::duration<double>(to - from).count();
}

inline std::int64_t notedAs(ko::Clock::time_point time) {
  const std::int64_t now = inNs(time);
  return now == 0 ? 1 : now;
}

inline std::int64_t nowInNs() {
  return notedAs(ko::Clock::now());
}

}  // namespace QV::sensor
