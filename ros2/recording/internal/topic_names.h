#pragma once

#include <string>

#include "platform/api.h"

namespace QV::ros2 {

/** The topics that a recording is played from; docs/recordings.md has all. */
inline constexpr char kInputsTopic[] = "/qv/inputs";
inline constexpr char kCommandsTopic[] = "/qv/commands";
inline constexpr char kRecordsTopic[] = "/qv/records";
inline constexpr char kDescriptionTopic[] = "/robot_description";
inline constexpr char kMapTopic[] = "/map";

/** The sensors of people and of all touches, which no description names. */
inline constexpr char kPeoplePerception[] = "PeoplePerception";
inline constexpr char kTouch[] = "Touch";

/** Returns what a topic may be called: "Sonar/Front_left" for "Sonar/Front-left". */
QV_API std::string toGraphName(const std::string& text);

/** Returns the topic of a sensor's measurements: "scan", "range", "contact" or "image". */
inline std::string driverTopicOf(const std::string& sensor, const char* what) {
  return "/" + sensor + "/" + what;
}

/** Returns the memory key of the position of a joint of a heard robot (rad, m). */
inline std::string jointKeyOf(const std::string& joint) {
  return "Joint/" + joint + "/Position";
}

/** Returns the topic of a sensor's points. */
inline std::string cloudTopicOf(const std::string& sensor) {
  return "/" + sensor + "/points";
}

/** Returns the topic of a camera's images; the next one, that of its points as pixels of them. */
inline std::string imageTopicOf(const std::string& camera) {
  return "/" + camera + "/image";
}
inline std::string imagePointsTopicOf(const std::string& camera) {
  return "/" + camera + "/image_points";
}

}  // namespace QV::ros2
