#include "platform/model/sensor_properties.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "platform/math/internal/truncated.h"
#include "platform/model/internal/number_text.h"

namespace QV::Model {

std::string SensorProperties::getText(const std::string& name) const {
  const auto found = properties.find(name);
  return found == properties.end() ? std::string() : found->second;
}

float SensorProperties::getNumber(const std::string& name) const {
  return static_cast<float>(atofC(getText(name)));
}

float SensorProperties::getFinite(const std::string& name) const {
  const float number = getNumber(name);
  return std::isfinite(number) ? number : 0.0f;
}

int SensorProperties::getInteger(const std::string& name) const {
  return Math::truncated(getNumber(name));
}

float SensorProperties::getAngle(const std::string& name) const {
  return std::clamp(getFinite(name), 0.0f, 2.0f * std::numbers::pi_v<float>);
}

Math::SensorFieldOfView2D SensorProperties::getFieldOfView() const {
  return {getNumber("minimumDetectionDistance"), getNumber("maximumDetectionDistance"),
          getNumber("horizontalAngularRange"), 1};
}

}  // namespace QV::Model
