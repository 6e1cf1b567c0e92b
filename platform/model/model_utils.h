#pragma once

#include <string>

#include "platform/api.h"
#include "platform/model/robot.h"
#include "platform/model/sensor_kinds.h"

namespace QV::Model::ModelUtils {

/**
 * Reads a robot description: URDF with this library's own elements (docs/robot-description.md).
 * A malformed one throws std::runtime_error naming line, element and what was expected. Numbers
 * read the same in every locale. `kinds` are the words that may stand for a sensor's type; any
 * other word leaves the sensor to another tool. Safe from any thread.
 */
QV_API Robot robotFromXml(const std::string& xml,
                          const SensorKinds& kinds = SensorKinds::standard());

}  // namespace QV::Model::ModelUtils
