#include "ros2/recording/internal/frame_topics.h"

#include <exception>

#include "platform/middleware/contracts/motion_contract.h"
#include "platform/middleware/qv_motion_proxy.h"
#include "platform/navigation/internal/map_shift.h"
#include "ros2/messages/geometry_msgs.h"
#include "ros2/messages/scene_msgs.h"
#include "ros2/recording/internal/conversions.h"
#include "ros2/recording/internal/sensor_sorts.h"

namespace QV::ros2 {
namespace {

geometry_msgs::TransformStamped stamped(ko::Clock::time_point time, const std::string& parent,
                                        const std::string& child, const geometry_msgs::Pose& pose) {
  return {headerOf(time, parent), child, transformOf(pose)};
}

/** Returns the pose of the optics as cameras have it: z ahead, x to the right, y down. */
geometry_msgs::Pose opticalPose() {
  return {{}, {-0.5, 0.5, -0.5, 0.5}};
}

}  // namespace

FrameTopics::FrameTopics(MessageSink& sink, const session::Session& session,
                         const FrameNames& names, bool tellsMap)
    : sink(sink),
      names(names),
      tellsMap(tellsMap),
      tf(sink.add<tf2_msgs::TFMessage>("/tf")),
      tfStatic(sink.add<tf2_msgs::TFMessage>("/tf_static", kLatched)),
      odometry(sink.add<nav_msgs::Odometry>("/odom")),
      clock(sink.add<rosgraph_msgs::Clock>("/clock")) {
  xWriteStatic(session);
}

// Readers that come later get one message, so all is in that.
void FrameTopics::xWriteStatic(const session::Session& session) {
  tf2_msgs::TFMessage message;
  xAddShift(session, message);
  xAddMountings(session, message);
  if (!message.transforms.empty()) sink.write(tfStatic, logTimeOf(ko::Clock::now()), message);
}

// As the child of the map: the map stays the root of the tree.
void FrameTopics::xAddShift(const session::Session& session, tf2_msgs::TFMessage& message) const {
  const auto map = session.getMap();
  const MapShift shift = map ? map->getShift() : MapShift();
  if (!isShifted(shift)) return;
  const geometry_msgs::Pose zero{{-shift.x, -shift.y, 0.0}, {}};
  message.transforms.push_back(stamped(ko::Clock::now(), names.ofMap(), names.ofUtm(), zero));
}

void FrameTopics::xAddMountings(const session::Session& session,
                                tf2_msgs::TFMessage& message) const {
  const auto* description = session.getDescription();
  if (!description || !session.getBroker()) return;
  const auto now = ko::Clock::now();
  const QVMotionProxy motion(session.getBroker());
  for (const auto& [name, config] : description->sensorConfigs) {
    try {
      const Math::Transform mounted(motion.getTransform(name, MotionContract::kGroundFrame, true));
      message.transforms.push_back(stamped(now, names.ofBase(), names.of(name), poseOf(mounted)));
    } catch (const std::exception&) {
      continue;
    }
    if (!isCamera(config)) continue;
    message.transforms.push_back(stamped(now, names.of(name), names.ofOptics(name), opticalPose()));
  }
}

void FrameTopics::writeFrames(const robot::BodyStep& step, ko::Clock::time_point time) {
  if (!sink.isRead(tf)) return;
  // Exactly none where there is none: a recording is played to where the robot was.
  const Math::Pose2D drift =
      step.pose == step.odometry ? Math::Pose2D() : step.pose * Math::pinv(step.odometry);
  tf2_msgs::TFMessage message;
  if (tellsMap)
    message.transforms.push_back(stamped(time, names.ofMap(), names.ofOdometry(), poseOf(drift)));
  message.transforms.push_back(
      stamped(time, names.ofOdometry(), names.ofBase(), poseOf(step.odometry)));
  sink.write(tf, logTimeOf(time), message);
}

void FrameTopics::writeStep(const robot::BodyStep& step, ko::Clock::time_point time) {
  writeFrames(step, time);
  if (!sink.isRead(odometry)) return;
  nav_msgs::Odometry message;
  message.header = headerOf(time, names.ofOdometry());
  message.child_frame_id = names.ofBase();
  message.pose.pose = poseOf(step.odometry);
  message.twist.twist = {{step.velocity.x, step.velocity.y, 0.0}, {0.0, 0.0, step.velocity.theta}};
  sink.write(odometry, logTimeOf(time), message);
}

void FrameTopics::writeClock(ko::Clock::time_point time) {
  if (!sink.isRead(clock)) return;
  sink.write(clock, logTimeOf(time), rosgraph_msgs::Clock{stampOf(time)});
}

}  // namespace QV::ros2
