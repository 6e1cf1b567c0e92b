#pragma once

#include <optional>

#include "platform/api.h"
#include "platform/ko/clock.h"

namespace ko::detail {

/** The machine's monotonic time since the process started, also while a SimulatedTime counts. */
Clock::time_point machineNow() noexcept;

/**
 * Returns what Clock::now() says, or up to some milliseconds before it, at a fraction of the cost.
 */
QV_API Clock::time_point coarseNow() noexcept;

/** The time that a SimulatedTime shows, or nothing while the machine's clock counts. */
std::optional<Clock::time_point> simulatedNow() noexcept;

void showSimulatedTime(Clock::time_point now) noexcept;
void showMachineTime() noexcept;

/** `time` moved on by `duration`, at most to the last time there is. */
Clock::time_point later(Clock::time_point time, Duration duration) noexcept;

}  // namespace ko::detail
