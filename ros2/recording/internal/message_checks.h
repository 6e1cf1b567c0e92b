#pragma once

#include <cstddef>

#include "platform/api.h"
#include "ros2/messages/geometry_msgs.h"
#include "ros2/messages/scene_msgs.h"
#include "ros2/messages/sensor_msgs.h"

/**
 * The checks of other robots' messages before their use. Each throws std::runtime_error with the
 * expected and the given value.
 */
namespace QV::ros2 {

/** Beams of a scan; no lidar has more. */
inline constexpr std::size_t kMostBeams = 10'000;

/** Beams at angles of their own, at least one of which says something. */
QV_API void checkMessage(const sensor_msgs::LaserScan& scan);
/** Reads a Range of either layout: with variance, or without as it was up to Humble. */
QV_API sensor_msgs::Range rangeFromCdr(BytesView cdr);
/** A range or an infinity. */
QV_API void checkMessage(const sensor_msgs::Range& range);
/** Rows that lie within the data. */
QV_API void checkMessage(const sensor_msgs::PointCloud2& cloud);
QV_API void checkMessage(const nav_msgs::Odometry& odometry);
/** A position for each name, all of them numbers. */
QV_API void checkMessage(const sensor_msgs::JointState& joints);

QV_API void checkPosition(const geometry_msgs::Vector3& position);
/** The same rotation, of length 1; it may be off by a tenth before. */
QV_API geometry_msgs::Quaternion soundRotation(const geometry_msgs::Quaternion& rotation);

}  // namespace QV::ros2
