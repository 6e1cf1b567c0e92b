#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

#include "platform/middleware/qv_value.h"
#include "ros2/recording/internal/frame_names.h"
#include "ros2/recording/internal/topic_survey.h"

namespace QV::ros2 {
namespace {

// The same in every locale.
std::string textOf(float value) {
  return QVValue(value).toText();
}

// A recording may call topics and frames anything.
std::string escaped(const std::string& text) {
  std::string result;
  for (const char letter : text) {
    const bool isPlain = std::string_view("&<\"\t\n\r").find(letter) == std::string_view::npos;
    result += isPlain ? std::string(1, letter) : "&#" + std::to_string(int{letter}) + ";";
  }
  return result;
}

std::string property(const char* name, const std::string& value) {
  return std::string("    <property key=\"") + name + "\" value=\"" + value + "\"/>\n";
}

/** About x, y and z, as descriptions have it. */
std::array<float, 3> anglesOf(const Math::Transform& t) {
  return {std::atan2(t(2, 1), t(2, 2)), std::atan2(-t(2, 0), std::hypot(t(0, 0), t(1, 0))),
          std::atan2(t(1, 0), t(0, 0))};
}

std::string originOf(const Math::Transform& mounting) {
  const Math::Position3D at = Math::position3DFromTransform(mounting);
  const auto [roll, pitch, yaw] = anglesOf(mounting);
  return "    <origin xyz=\"" + textOf(at.x) + " " + textOf(at.y) + " " + textOf(at.z) +
         "\" rpy=\"" + textOf(roll) + " " + textOf(pitch) + " " + textOf(yaw) + "\"/>\n";
}

const char* typeOf(ToldSort sort) {
  switch (sort) {
    case ToldSort::scan:
    case ToldSort::cloud:
      return "Laser";
    case ToldSort::range:
      return "Sonar";
    case ToldSort::contact:
      return "BlindZone";
    case ToldSort::touch:
      return "Touch";
    case ToldSort::depth:
      return "DepthCamera";
  }
  return "";
}

/** Returns the key of `what`: "range", "mode", "time", or a beam's number and X or Y. */
std::string keyOf(const ToldSensor& sensor, const std::string& what) {
  return "Recording/" + sensor.name + "/" + what;
}

std::string detailsOf(const ToldSensor& sensor) {
  switch (sensor.sort) {
    case ToldSort::scan:
    case ToldSort::cloud:
      return property("regIndex", "1") + property("setOperationMode", keyOf(sensor, "set_mode")) +
             property("getOperationMode", keyOf(sensor, "mode")) +
             property("timestamp", keyOf(sensor, "time")) + "    <memory_keys pattern=\"" +
             keyOf(sensor, "{i}/{X,Y}") + "\" count=\"" + std::to_string(sensor.beams) + "\"/>\n";
    case ToldSort::range:
    case ToldSort::contact:
      return "    <memory_key>" + keyOf(sensor, "range") + "</memory_key>\n";
    case ToldSort::touch:
      return "";
    case ToldSort::depth:
      return property("verticalAngularRange", textOf(sensor.verticalAperture)) +
             property("modelCode", "1");
  }
  return "";
}

/** Only a laser's messages may be of two types. */
std::string messageTypeOf(const ToldSensor& sensor) {
  if (sensor.sort != ToldSort::cloud) return "";
  return property("messageType", sensor_msgs::PointCloud2::getType().getName());
}

std::string describe(const ToldSensor& sensor) {
  return "  <sensor name=\"" + sensor.name + "\" type=\"" + typeOf(sensor.sort) + "\">\n" +
         originOf(sensor.mounting) + property("topic", escaped(sensor.topic)) +
         property("frame", escaped(sensor.frame.value_or(""))) + messageTypeOf(sensor) +
         property("minimumDetectionDistance", textOf(sensor.minRange)) +
         property("maximumDetectionDistance", textOf(sensor.maxRange)) +
         property("horizontalAngularRange", textOf(sensor.aperture)) + detailsOf(sensor) +
         "  </sensor>\n";
}

/** True if the root link of this name would be another frame, too, where the robot is published. */
bool isOtherFrame(const TopicSurvey& survey, const std::string& name) {
  if (name == FrameNames::kMap || name == FrameNames::kOdometry || name == FrameNames::kUtm)
    return true;
  return std::ranges::any_of(survey.sensors, [&](const auto& entry) {
    return name == entry.second.name || name == entry.second.name + "_optical";
  });
}

std::string rootLinkOf(const TopicSurvey& survey) {
  const std::string& base = survey.base;
  // The text of a description would end at a zero.
  const bool isName = !base.empty() && base.find('\0') == std::string::npos;
  return isName && !isOtherFrame(survey, base) ? base : "body";
}

}  // namespace

std::string describe(const TopicSurvey& survey) {
  std::string xml = "<robot name=\"recorded\">\n  <kind code=\"1\"/>\n  <link name=\"" +
                    escaped(rootLinkOf(survey)) + "\"/>\n";
  for (const auto& [topic, sensor] : survey.sensors) xml += describe(sensor);
  return xml + "</robot>\n";
}

}  // namespace QV::ros2
