#pragma once

#include <string>
#include <vector>

#include "robot/services/internal/input_listener.h"
#include "ros2/messages/geometry_msgs.h"
#include "ros2/recording/internal/frame_names.h"
#include "ros2/recording/internal/message_sink.h"
#include "session/session.h"

namespace QV::ros2 {

/** Writes where the robot and its sensors are: tf, odometry and the clock. */
class QV_API FrameTopics {
 public:
  /**
   * `sink` and `session` must outlive it. Writes where the robot's sensors are mounted, and the
   * shift of its map as the frame "utm". Without `tellsMap` others place odometry in the map.
   */
  FrameTopics(MessageSink& sink, const session::Session& session, const FrameNames& names,
              bool tellsMap = true);

  void writeStep(const robot::BodyStep& step, ko::Clock::time_point time);
  /** Writes only tf of it. */
  void writeFrames(const robot::BodyStep& step, ko::Clock::time_point time);
  void writeClock(ko::Clock::time_point time);

 private:
  void xWriteStatic();
  void xAddShift(tf2_msgs::TFMessage& message) const;
  void xAddMountings(tf2_msgs::TFMessage& message);
  void xAddMounting(tf2_msgs::TFMessage& message, const Model::SensorConfig& sensor,
                    ko::Clock::time_point time) const;

  MessageSink& sink;
  const session::Session& session;
  const FrameNames names;
  /** The sensors that joints move: their frames are no static ones. */
  std::vector<Model::SensorConfig> moving;
  const bool tellsMap;
  const std::uint16_t tf;
  const std::uint16_t tfStatic;
  const std::uint16_t odometry;
  const std::uint16_t clock;
};

}  // namespace QV::ros2
