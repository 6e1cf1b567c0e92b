#include "robot/logs/internal/recording.h"

#include "platform/middleware/qv_value.h"

namespace QV::robot {
namespace {

// The same in every locale.
std::string textOf(float value) {
  return QVValue(value).toText();
}

std::string describe(const Model::SensorConfig& sensor) {
  const Math::Pose2D place = Math::pose2DFromTransform(sensor.origin);
  std::string xml = "  <sensor name=\"" + sensor.name + "\" type=\"" + std::to_string(sensor.type) +
                    "\">\n    <origin xyz=\"" + textOf(place.x) + " " + textOf(place.y) +
                    " 0\" rpy=\"0 0 " + textOf(place.theta) + "\"/>\n";
  for (const auto& [key, value] : sensor.properties) {
    xml += "    <property key=\"" + key + "\" value=\"" + value + "\"/>\n";
  }
  for (const std::string& key : sensor.memoryKeys) {
    xml += "    <memory_key>" + key + "</memory_key>\n";
  }
  return xml + "  </sensor>\n";
}

}  // namespace

std::string Recording::toDescription() const {
  std::string xml = "<robot name=\"recorded\">\n  <kind code=\"1\"/>\n  <link name=\"body\"/>\n";
  for (const Model::SensorConfig& sensor : sensors) xml += describe(sensor);
  return xml + "</robot>\n";
}

}  // namespace QV::robot
