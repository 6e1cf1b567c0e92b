#pragma once

#include <vector>

#include "platform/model/robot.h"
#include "platform/model/sensor_kinds.h"

namespace QV::ros2 {

/** What a driver tells of a sensor: beams, a range, a contact, images, or something unknown. */
enum class SensorSort { scan, range, contact, camera, other };

SensorSort sortOf(const Model::SensorConfig& config,
                  const Model::SensorKinds& kinds = Model::SensorKinds::standard());

/** In the order of the robot's cameras, the first of which is kDepthCamera. */
std::vector<const Model::SensorConfig*> camerasOf(const Model::Robot& robot);

}  // namespace QV::ros2
