#pragma once

#include <cstdint>

#include <boost/chrono/duration.hpp>
#include <boost/chrono/time_point.hpp>

#include "platform/api.h"

namespace ko {

/** A signed 64-bit count of nanoseconds. */
using Duration = boost::chrono::nanoseconds;

/**
 * The clock of the process. It starts near 0 with the process and is steady: it jumps only when a
 * SimulatedTime begins or ends.
 *
 * - Units: nanoseconds. It is not a wall clock.
 * - Special values: none; time point 0 is an ordinary time. For "no time" use std::optional.
 * - Lifetime: all functions are static.
 * - Threads: thread-safe; no operation waits.
 * - Errors: none.
 *
 * The records that are older than a second:
 *
 *     for (const auto& record : manager.getMetricalData())
 *       if (QV::Math::age(record, ko::Clock::now()) > boost::chrono::seconds(1))
 *         std::cout << record.sensorName << '\n';
 */
struct QV_API Clock {
  using duration = Duration;
  using rep = duration::rep;
  using period = duration::period;
  using time_point = boost::chrono::time_point<Clock, duration>;

  static constexpr bool is_steady = true;

  /** Returns the current time; the simulated one while a SimulatedTime exists. */
  static time_point now() noexcept;

  /** Converts to the device manager's counter: whole milliseconds modulo 2^32, signed. */
  static std::int32_t toInt32ms(time_point time) noexcept;

  /** Converts the device manager's counter back, to the matching time nearest to now. */
  static time_point fromInt32ms(std::int32_t ms) noexcept;

  /** Converts the counter back, to the matching time nearest to `reference`. Subtracts `offsetMs`
   * first: the offset that the device manager was asked to add. */
  static time_point fromInt32ms(std::int32_t ms, time_point reference,
                                std::int32_t offsetMs) noexcept;
};

}  // namespace ko

namespace ko::os {

/** Sleeps for a time of ko::Clock, real or simulated; returns at once for 0 or less. */
QV_API void msleep(int milliseconds);

}  // namespace ko::os
