#pragma once

#include <cstdint>

#include <boost/chrono/duration.hpp>
#include <boost/chrono/time_point.hpp>

#include "platform/api.h"

namespace ko {

/** A signed 64-bit count of nanoseconds. */
using Duration = boost::chrono::nanoseconds;

/**
 * The one time of the process: it starts near 0 with the process and never goes back, unless a
 * SimulatedTime has taken it over.
 *
 * - Units: nanoseconds. It is no wall clock: the time of day is not in it.
 * - Special values: time point 0 is a time like any other; who needs "none" uses std::optional.
 * - Lifetime: nothing to make or to end.
 * - Threads: thread-safe, and no operation waits.
 * - Errors: none.
 *
 * How old is a record?
 *
 *     for (const auto& record : manager.getMetricalData())
 *       if (QV::Math::age(record, ko::Clock::now()) > seconds(1)) std::cout << record.sensorName;
 */
struct QV_API Clock {
  using duration = Duration;
  using rep = duration::rep;
  using period = duration::period;
  using time_point = boost::chrono::time_point<Clock, duration>;

  static constexpr bool is_steady = true;

  /** The present time; simulated while a SimulatedTime lives. */
  static time_point now() noexcept;

  /** The device manager's count of `time`: whole milliseconds modulo 2^32, as a signed number. */
  static std::int32_t toInt32ms(time_point time) noexcept;

  /** The time nearest to now whose millisecond count is `ms` modulo 2^32. */
  static time_point fromInt32ms(std::int32_t ms) noexcept;

  /** The time nearest to `reference` whose millisecond count is `ms` modulo 2^32. `offsetMs` is
   * what the device manager was asked to add to the count; it is taken off again. */
  static time_point fromInt32ms(std::int32_t ms, time_point reference,
                                std::int32_t offsetMs) noexcept;
};

}  // namespace ko

namespace ko::os {

/** Sleeps in ko's time, the machine's or a simulated one; returns at once if not positive. */
QV_API void msleep(int milliseconds);

}  // namespace ko::os
