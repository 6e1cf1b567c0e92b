#include "ros2/recording/internal/told_frames.h"

#include <stdexcept>
#include <utility>

#include "platform/ko/log.h"
#include "ros2/recording/internal/conversions.h"

namespace QV::ros2 {
ToldFrames::ToldFrames(FrameTree known, std::string root, std::string category)
    : tree(std::move(known)), root(std::move(root)), category(std::move(category)) {
  xPlaceRobot();
}

// The sound ones of a message count although another one is refused.
void ToldFrames::add(const tf2_msgs::TFMessage& message) {
  try {
    tree.add(message);
  } catch (const std::runtime_error&) {
    xPlaceRobot();
    throw;
  }
  xPlaceRobot();
}

void ToldFrames::add(const nav_msgs::Odometry& odometry) {
  moving = withoutSlash(odometry.child_frame_id);
  movesIn = withoutSlash(odometry.header.frame_id);
  moved = poseOf(odometry.pose.pose);
  hasMoved = true;
  xPlaceRobot();
}

const std::string& ToldFrames::getBase() const {
  return !tree.has(root) && tree.has(moving) ? moving : root;
}

Math::Pose2D ToldFrames::getPose() const {
  const std::lock_guard lock(mutex);
  return pose;
}

Math::Transform ToldFrames::get(const std::string& frame) const {
  if (const auto placed = find(frame)) return *placed;
  throw std::runtime_error("a frame that tf connects to " + getBase() + " expected, \"" + frame +
                           "\" given");
}

// Frames may hang on the one that only odometry moves.
void ToldFrames::xPlaceRobot() {
  const std::string& base = getBase();
  const std::string top = tree.rootOf(base);
  const auto placed = tree.find(base, top);
  if (tree.has(base) && top != moving)
    return xSetPose(Math::pose2DFromTransform(*placed), Source::tf);
  if (!hasMoved) return;
  xSetPose(tree.has(base) ? moved * Math::pose2DFromTransform(*placed) : moved, Source::odometry);
}

void ToldFrames::xSetPose(const Math::Pose2D& newPose, Source newSource) {
  source = newSource;
  const std::lock_guard lock(mutex);
  pose = newPose;
}

void ToldFrames::look() {
  const auto now = ko::Clock::now();
  if (!begun) begun = now;
  if (source == said) return changed.reset();
  if (!changed) changed = now;
  if (now - *changed < kPatience) return;
  said = source;
  xSay();
}

void ToldFrames::xSay() const {
  switch (source) {
    case Source::tf:
      ko::log::info(category, "pose") << "tf says where " << getBase() << " is";
      break;
    case Source::odometry:
      ko::log::warning(category, "pose")
          << "tf does not say where " << getBase() << " is: the pose is that of odometry, in \""
          << movesIn << '"';
      break;
    case Source::nothing:
      ko::log::warning(category, "pose")
          << "neither tf nor odometry says where " << root << " is: the pose stays 0,0,0";
      break;
  }
}

}  // namespace QV::ros2
