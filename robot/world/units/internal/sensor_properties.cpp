#include "robot/world/units/internal/sensor_properties.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "platform/middleware/qv_value.h"
#include "platform/model/internal/number_text.h"

namespace QV::robot {

std::string textOf(const Model::SensorConfig& config, const std::string& property) {
  const auto found = config.properties.find(property);
  return found == config.properties.end() ? std::string() : found->second;
}

float numberOf(const Model::SensorConfig& config, const std::string& property) {
  const auto number = static_cast<float>(Model::atofC(textOf(config, property)));
  return std::isfinite(number) ? number : 0.0f;
}

int integerOf(const Model::SensorConfig& config, const std::string& property) {
  return QVValue(numberOf(config, property)).toInt32();
}

float angleOf(const Model::SensorConfig& config, const std::string& property) {
  return std::clamp(numberOf(config, property), 0.0f, 2.0f * std::numbers::pi_v<float>);
}

}  // namespace QV::robot
