#pragma once

#include <optional>
#include <vector>

#include "platform/math/metrical_data.h"
#include "ros2/recording/session_replay.h"

namespace QV::ros2 {

/** The first difference in any bit, by sensor; records are in the order in which they come. */
std::optional<RecordDifference> findDifference(const std::vector<Math::MetricalData>& recorded,
                                               const std::vector<Math::MetricalData>& played,
                                               ko::Clock::time_point time);

}  // namespace QV::ros2
