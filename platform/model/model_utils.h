#pragma once

#include <string>

#include "platform/api.h"
#include "platform/model/robot.h"
#include "platform/model/sensor_kinds.h"

namespace QV::Model::ModelUtils {

/**
 * Reads a robot description: URDF with this library's own elements (docs/robot-description.md).
 * Throws std::runtime_error that names line, element and expectation. Numbers read the same in
 * every locale. `kinds`: the sensor kinds that `type` may name; a sensor of another type is left to
 * other tools. Thread-safe.
 */
QV_API Robot robotFromXml(const std::string& xml,
                          const SensorKinds& kinds = SensorKinds::standard());

}  // namespace QV::Model::ModelUtils
