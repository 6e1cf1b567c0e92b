#pragma once

#include <string>
#include <vector>

#include "platform/api.h"
#include "platform/model/robot.h"
#include "platform/model/sensor_kinds.h"

namespace QV::ros2 {

/**
 * The sort of what a driver tells of a sensor: beams, a range, a contact, images, or something
 * unknown.
 */
enum class SensorSort { scan, range, contact, camera, other };

SensorSort sortOf(const Model::SensorConfig& config, const Model::SensorKinds& kinds);

/** True for a camera of the library's kind: the video device has no others. */
QV_API bool isCamera(const Model::SensorConfig& config);

/** Returns the robot's cameras in their order; the first is kDepthCamera. */
std::vector<const Model::SensorConfig*> camerasOf(const Model::Robot& robot);

/** Returns the frame in which people are reported that a camera has found. */
std::string peopleFrameOf(const Model::SensorConfig& camera);

}  // namespace QV::ros2
