#pragma once

#include <map>
#include <numbers>
#include <string>
#include <vector>

#include "ros2/bag/bag_reader.h"
#include "ros2/recording/internal/frame_tree.h"

namespace QV::ros2 {

constexpr float kFullTurn = 2.0f * std::numbers::pi_v<float>;

/** Whether its messages are of this type. */
template <typename Message>
bool isOf(const BagTopic& topic) {
  return topic.encoding == "cdr" && topic.type == Message::getType().getName();
}

/** What of another robot's topic a sensor is made. */
enum class ToldSort { scan, range, contact, depth, cloud };

/** A sensor as its first message shows it. Metres, radians. */
struct ToldSensor {
  ToldSort sort = ToldSort::scan;
  /** Of letters, digits and "_". */
  std::string name;
  std::string topic;
  /** Of the messages, without a slash. */
  std::string frame;
  /** In the robot's frame; x ahead, for cameras too. */
  Math::Transform mounting;
  float minRange = 0.0f;
  float maxRange = 0.0f;
  /** About the x axis of its mounting, half of it on each side. */
  float aperture = 0.0f;
  float verticalAperture = 0.0f;
  /** Of a scan: from its frame's x axis to the mounting's. */
  float middle = 0.0f;
  std::size_t beams = 0;
};

/** What another robot's recording can be played to. */
struct TopicSurvey {
  /** By topic. */
  std::map<std::string, ToldSensor> sensors;
  /** Of the robot, and what it is placed in: "odom" or "map". */
  std::string base;
  /** Empty if there is none. */
  std::string odometryTopic;
  FrameTree frames;
};

/**
 * Reads half a minute, and on until each topic has come up. std::runtime_error if no topic makes a
 * sensor; messages that can't be understood are left out.
 */
TopicSurvey surveyTopics(const std::string& path);

/** A URDF of a robot with these sensors, each with the memory keys of keyOf. */
std::string describe(const TopicSurvey& survey);

/** Of a sensor: `what` is "range", "mode", "time", or of a beam its number and X or Y. */
std::string keyOf(const ToldSensor& sensor, const std::string& what);

}  // namespace QV::ros2
