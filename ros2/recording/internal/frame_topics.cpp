#include "ros2/recording/internal/frame_topics.h"

#include <algorithm>
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

/** True if a joint with a position is between the sensor and the root: what moves is not static. */
bool isMoved(const Model::Robot& robot, const Model::SensorConfig& sensor) {
  const auto above = [&](const std::string& link) {
    return std::ranges::find(robot.joints, link, &Model::JointConfig::childLink);
  };
  for (auto joint = above(sensor.parentLink); joint != robot.joints.end();
       joint = above(joint->parentLink))
    if (Model::hasPosition(joint->type)) return true;
  return false;
}

}  // namespace

FrameTopics::FrameTopics(MessageSink& sink, const session::Session& session,
                         const FrameNames& names, bool tellsMap)
    : sink(sink),
      session(session),
      names(names),
      tellsMap(tellsMap),
      tf(sink.add<tf2_msgs::TFMessage>("/tf")),
      tfStatic(sink.add<tf2_msgs::TFMessage>("/tf_static", kLatched)),
      odometry(sink.add<nav_msgs::Odometry>("/odom")),
      clock(sink.add<rosgraph_msgs::Clock>("/clock")) {
  xWriteStatic();
}

// Readers that come later get one message, so all is in that.
void FrameTopics::xWriteStatic() {
  tf2_msgs::TFMessage message;
  xAddShift(message);
  xAddMountings(message);
  if (!message.transforms.empty()) sink.write(tfStatic, logTimeOf(ko::Clock::now()), message);
}

// As the child of the map: the map stays the root of the tree.
void FrameTopics::xAddShift(tf2_msgs::TFMessage& message) const {
  const auto map = session.getMap();
  const MapShift shift = map ? map->getShift() : MapShift();
  if (!isShifted(shift)) return;
  const geometry_msgs::Pose zero{{-shift.x, -shift.y, 0.0}, {}};
  message.transforms.push_back(stamped(ko::Clock::now(), names.ofMap(), names.ofUtm(), zero));
}

void FrameTopics::xAddMountings(tf2_msgs::TFMessage& message) {
  const auto* description = session.getDescription();
  if (!description || !session.getBroker()) return;
  const auto now = ko::Clock::now();
  for (const auto& [name, config] : description->sensorConfigs) {
    if (isMoved(*description, config)) {
      moving.push_back(config);
    } else {
      xAddMounting(message, config, now);
    }
  }
}

void FrameTopics::xAddMounting(tf2_msgs::TFMessage& message, const Model::SensorConfig& sensor,
                               ko::Clock::time_point time) const {
  const std::string& name = sensor.name;
  try {
    const QVMotionProxy motion(session.getBroker());
    const Math::Transform mounted(motion.getTransform(name, MotionContract::kGroundFrame, true));
    message.transforms.push_back(stamped(time, names.ofBase(), names.of(name), poseOf(mounted)));
  } catch (const std::exception&) {
    return;
  }
  if (!isCamera(sensor)) return;
  message.transforms.push_back(stamped(time, names.of(name), names.ofOptics(name), opticalPose()));
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
  for (const auto& sensor : moving) xAddMounting(message, sensor, time);
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
