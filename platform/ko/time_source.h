#pragma once

#include <optional>

#include "platform/ko/clock.h"

namespace ko::detail {

/** The time that a SimulatedTime shows, or nothing while the machine's clock counts. */
std::optional<Clock::time_point> simulatedNow() noexcept;

void showSimulatedTime(Clock::time_point now) noexcept;
void showMachineTime() noexcept;

}  // namespace ko::detail
