#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/model/robot.h"
#include "platform/model/sensor_kinds.h"
#include "ros2/messages/sensor_msgs.h"
#include "ros2/recording/internal/frame_tree.h"

namespace QV::ros2 {

/** Radians, and no more than there are in one. */
constexpr float kFullTurn = 6.283185f;

/** A message that somebody has published, CDR. */
struct ToldMessage {
  const std::string& topic;
  const std::string& type;
  BytesView cdr;
};

/** True if messages of this type are such. */
template <typename Message>
bool isOf(const std::string& type) {
  return type == Message::getType().getName();
}

/**
 * The sort of another robot's topic that a sensor is made of; a touch is one of a sensor without a
 * range.
 */
enum class ToldSort { scan, range, contact, touch, depth, cloud };

/** A sensor as its first message shows it. Metres, radians. */
struct ToldSensor {
  ToldSort sort = ToldSort::scan;
  /** The name, of letters, digits and "_". */
  std::string name;
  std::string topic;
  /** The frame of the messages, without a slash; std::nullopt if nobody names one. */
  std::optional<std::string> frame = std::nullopt;
  /** The mounting in the ground frame; x ahead, for cameras too. */
  Math::Transform mounting;
  float minRange = 0.0f;
  float maxRange = 0.0f;
  /** About the x axis of its mounting, half of it on each side. */
  float aperture = 0.0f;
  float verticalAperture = 0.0f;
  /** The middle of a scan, see middleOf; std::nullopt before the first scan of a described sensor.
   */
  std::optional<float> middle = std::nullopt;
  std::size_t beams = 0;
};

/** The survey of another robot's topics and their sensors. */
struct TopicSurvey {
  /** The sensors by topic. */
  std::map<std::string, ToldSensor> sensors;
  /** The frame of the robot, and its parent: "odom" or "map". */
  std::string base;
  /** The frame of the map. */
  std::string map = "map";
  /** Empty if there is none. */
  std::string odometryTopic;
  FrameTree frames;
};

/**
 * Returns the turn from the x axis of a scan's frame to that of its sensor: the middle of the
 * beams, or the same axis where they go all around. Radians.
 */
QV_API float middleOf(const sensor_msgs::LaserScan& scan);

/** Finds out from the first message of each topic which sensors a robot has. */
class QV_API TopicSurveyor {
 public:
  /** A topic that there is: one that makes a sensor is missing until it has spoken. */
  void expect(const std::string& topic, const std::string& type);
  /** Takes a message. One that can't be understood leaves the topic to the next, a hundred give
   * it up. */
  void take(const ToldMessage& message);
  /** True if every topic that makes a sensor has spoken. */
  bool isComplete() const { return missing.empty(); }
  bool hasOdometry() const { return !survey.odometryTopic.empty(); }
  /** std::runtime_error if no topic makes a sensor. Once. */
  TopicSurvey make();

 private:
  void xTake(const ToldMessage& message);
  /** Says, once, that there are too many. */
  void xLeaveOut(const std::string& topic);
  void xFindBase();
  /** Says which sensors tf does not place: they are mounted at 0,0,0. */
  void xNameUnplaced() const;
  bool xIsOfCamera(const ToldSensor& sensor) const;
  void xMount(ToldSensor& sensor) const;
  void xMountCamera(ToldSensor& sensor) const;

  TopicSurvey survey;
  /** Topics that are to make a sensor and have not come up. */
  std::set<std::string> missing;
  std::set<std::string> names;
  /** Messages that could not be understood, by their topics. */
  std::map<std::string, int> refused;
  std::vector<sensor_msgs::CameraInfo> infos;
  bool leavesOut = false;
};

/**
 * Surveys the topics that each sensor of a description, of these kinds, names, or that recordings
 * give it, which begin with `prefix` then. std::runtime_error for two sensors of one topic.
 */
QV_API TopicSurvey surveyDescription(const Model::Robot& robot, const Model::SensorKinds& kinds,
                                     const std::string& prefix = {});

/** A URDF of a robot with these sensors, each with memory keys after its name. */
QV_API std::string describe(const TopicSurvey& survey);

}  // namespace QV::ros2
