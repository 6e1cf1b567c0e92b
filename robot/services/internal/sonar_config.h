#pragma once

#include "platform/model/sensor_config.h"

namespace QV::robot {

/**
 * True if a configuration is that of a sonar that can be measured: it has the one key of a range.
 */
bool isSonar(const Model::SensorConfig& config);

}  // namespace QV::robot
