#pragma once

#include <vector>

#include <opencv2/core.hpp>

#include "platform/api.h"
#include "platform/math/position.h"
#include "ros2/messages/sensor_msgs.h"

namespace QV::ros2 {

/** The finite points of a cloud but those at its origin; std::runtime_error for one without x, y
 * and z as numbers. */
std::vector<Math::Position3D> pointsOf(const sensor_msgs::PointCloud2& cloud);

/** True if a robot could run into it: it is neither floor nor above a robot's head. */
bool isObstacle(const Math::Position3D& inBase, bool knowsFloor);

/**
 * Returns the depth in millimetres, 0 for nothing; std::runtime_error for an image that is no depth
 * image.
 */
QV_API cv::Mat_<std::uint16_t> depthOf(const sensor_msgs::Image& image);

}  // namespace QV::ros2
