#pragma once

#include <cstdint>

#include "platform/ko/clock.h"
#include "platform/math/metrical_data.h"
#include "platform/math/pose2d.h"
#include "platform/math/transform.h"
#include "platform/navigation/occupancy_map.h"
#include "ros2/messages/geometry_msgs.h"
#include "ros2/messages/report_msgs.h"
#include "ros2/messages/scene_msgs.h"

namespace QV::ros2 {

/** Recorded times are a session's and this, as 0 means "unknown" to others. */
constexpr ko::Duration kTimeOffset{1'000'000'000};

/** Nanoseconds in a recording; 0 for a time before all others. */
QV_API std::uint64_t logTimeOf(ko::Clock::time_point time);
/** Back from it. */
QV_API ko::Clock::time_point timeOf(std::uint64_t logTime);

QV_API builtin_interfaces::Time stampOf(ko::Clock::time_point time);
QV_API ko::Clock::time_point timeOf(const builtin_interfaces::Time& stamp);
QV_API std_msgs::Header headerOf(ko::Clock::time_point time, const std::string& frame);

QV_API geometry_msgs::Point pointOf(const Math::Position3D& position);
QV_API geometry_msgs::Pose poseOf(const Math::Pose2D& pose);
QV_API Math::Pose2D poseOf(const geometry_msgs::Pose& pose);
QV_API geometry_msgs::Pose poseOf(const Math::Transform& transform);
geometry_msgs::Transform transformOf(const geometry_msgs::Pose& pose);
Math::Transform transformOf(const geometry_msgs::Transform& transform);
/** A camera, x ahead, in its optical frame: x to the right, y down, z ahead. */
Math::Transform cameraInOptics();

nav_msgs::OccupancyGrid gridOf(const OccupancyMap& map);
/** std::runtime_error for one that is no map. */
QV_API OccupancyMap mapOf(const nav_msgs::OccupancyGrid& grid);

/** All but the points. */
qv_msgs::MetricalData messageWithoutPoints(const Math::MetricalData& record);
Math::MetricalData recordOf(const qv_msgs::MetricalData& message);

}  // namespace QV::ros2
