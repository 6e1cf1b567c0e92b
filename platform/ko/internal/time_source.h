#pragma once

#include <optional>

#include "platform/api.h"
#include "platform/ko/clock.h"

namespace ko::detail {

/** The real monotonic time since the process started, also while a SimulatedTime exists. */
Clock::time_point machineNow() noexcept;

/**
 * Returns Clock::now(), or up to some milliseconds less, at a fraction of the cost.
 */
QV_API Clock::time_point coarseNow() noexcept;

/** The simulated time, or nothing if there is none. */
QV_API std::optional<Clock::time_point> simulatedNow() noexcept;

void showSimulatedTime(Clock::time_point now) noexcept;
void showMachineTime() noexcept;

/** Returns `time` plus `duration`, at most the last possible time. */
Clock::time_point later(Clock::time_point time, Duration duration) noexcept;

}  // namespace ko::detail
