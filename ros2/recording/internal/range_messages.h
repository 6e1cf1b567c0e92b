#pragma once

#include "platform/api.h"
#include "platform/math/sensor_field_of_view_2d.h"
#include "ros2/messages/sensor_msgs.h"

namespace QV::ros2 {

/** Returns a range for a message: +inf for a miss, -inf for too near. */
QV_API float rangeIn(const Math::SensorFieldOfView2D& view, float range);

/** Returns a Range without header and range. */
QV_API sensor_msgs::Range rangeOf(const Math::SensorFieldOfView2D& view);

/** Returns a Range for a contact: min_range equals max_range, -inf means "there". */
QV_API sensor_msgs::Range contactOf(const Math::SensorFieldOfView2D& view, bool isThere);

/**
 * Returns a LaserScan without header and ranges: beams from right to left about the x axis, the
 * first and the last `angularRange` (rad) apart.
 */
QV_API sensor_msgs::LaserScan scanOf(const Math::SensorFieldOfView2D& view, std::size_t beams);

}  // namespace QV::ros2
