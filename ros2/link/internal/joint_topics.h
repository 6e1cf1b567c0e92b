#pragma once

#include <string>
#include <vector>

#include "platform/middleware/qv_motion_proxy.h"
#include "platform/model/robot.h"
#include "ros2/recording/internal/message_sink.h"
#include "session/session.h"

namespace QV::ros2 {

/** Writes where the joints of a robot stand. For the session's thread. */
class JointTopics {
 public:
  /** `sink` must outlive it. Without joints that move there is no topic. */
  JointTopics(MessageSink& sink, const session::Session& session);

  void write(const session::Session& session, ko::Clock::time_point time);

 private:
  MessageSink& sink;
  std::vector<Model::JointConfig> joints;
  std::uint16_t topic = 0;
};

/** Radians, or metres for one that slides; `moved` is the child link in the parent link. */
double jointPositionOf(const Model::JointConfig& joint, const Math::Transform& moved);

}  // namespace QV::ros2
