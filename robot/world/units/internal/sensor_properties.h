#pragma once

#include <string>

#include "platform/model/sensor_config.h"

namespace QV::robot {

/** A property of a sensor; empty if it is missing. */
std::string textOf(const Model::SensorConfig& config, const std::string& property);

/** The same as a number, as atofC reads it; 0 if it is missing or not finite. */
float numberOf(const Model::SensorConfig& config, const std::string& property);

/** The same as a whole number, rounded towards 0. */
int integerOf(const Model::SensorConfig& config, const std::string& property);

/** The same as an angle, cut off at 0 and a full turn. */
float angleOf(const Model::SensorConfig& config, const std::string& property);

}  // namespace QV::robot
