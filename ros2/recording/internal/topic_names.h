#pragma once

#include <string>

namespace QV::ros2 {

/** The topics that a recording is played from; docs/recordings.md has all. */
inline constexpr char kInputsTopic[] = "/qv/inputs";
inline constexpr char kCommandsTopic[] = "/qv/commands";
inline constexpr char kRecordsTopic[] = "/qv/records";
inline constexpr char kDescriptionTopic[] = "/robot_description";
inline constexpr char kMapTopic[] = "/map";

/** Of a sensor, what its driver measured: "scan", "range", "contact" or "image". */
inline std::string driverTopicOf(const std::string& sensor, const char* what) {
  return "/" + sensor + "/" + what;
}

/** Of a sensor's points. */
inline std::string cloudTopicOf(const std::string& sensor) {
  return "/" + sensor + "/points";
}

}  // namespace QV::ros2
