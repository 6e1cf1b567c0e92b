#include "ros2/link/internal/joint_topics.h"

#include <cmath>

#include "ros2/messages/sensor_msgs.h"
#include "ros2/recording/internal/conversions.h"

namespace QV::ros2 {

JointTopics::JointTopics(MessageSink& sink, const session::Session& session) : sink(sink) {
  if (!session.getDescription() || !session.getBroker()) return;
  for (const auto& joint : session.getDescription()->joints) {
    if (Model::hasPosition(joint.type)) joints.push_back(joint);
  }
  if (!joints.empty()) topic = sink.add<sensor_msgs::JointState>("/joint_states");
}

void JointTopics::write(const session::Session& session, ko::Clock::time_point time) {
  if (joints.empty() || !sink.isRead(topic)) return;
  const QVMotionProxy motion(session.getBroker());
  const auto frameOf = [&](const std::string& link) {
    return Math::Transform(motion.getTransform(link, MotionContract::kGroundFrame, true));
  };
  sensor_msgs::JointState message;
  message.header.stamp = stampOf(time);
  for (const auto& joint : joints) {
    const auto moved = Math::inverse(frameOf(joint.parentLink)) * frameOf(joint.childLink);
    message.name.push_back(joint.name);
    message.position.push_back(jointPositionOf(joint, moved));
  }
  sink.write(topic, logTimeOf(time), message);
}

// The angle of a turn about a unit axis: twice its sine along the axis is in the antisymmetric part
// of the matrix, and the trace is one plus twice its cosine.
double jointPositionOf(const Model::JointConfig& joint, const Math::Transform& moved) {
  const Math::Transform t = Math::inverse(joint.origin) * moved;
  const auto along = [&](double x, double y, double z) {
    return joint.axis.x * x + joint.axis.y * y + joint.axis.z * z;
  };
  if (joint.type == Model::JointType::prismatic) return along(t(0, 3), t(1, 3), t(2, 3));
  const double sine = along(t(2, 1) - t(1, 2), t(0, 2) - t(2, 0), t(1, 0) - t(0, 1));
  return std::atan2(sine, t(0, 0) + t(1, 1) + t(2, 2) - 1.0);
}

}  // namespace QV::ros2
