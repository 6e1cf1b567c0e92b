#pragma once

#include "outlets/internal/json_values.h"
#include "platform/ko/clock.h"
#include "platform/math/pose2d.h"

/** The parts that messages to viewers are made of. */
namespace QV::outlets::foxglove {

/** Seconds and nanoseconds; no time before the epoch. */
Json toJson(ko::Clock::time_point time);
Json positionOf(const Math::Pose2D& pose);
Json turnOf(const Math::Pose2D& pose);
Json toJson(const Math::Pose2D& pose);

}  // namespace QV::outlets::foxglove
