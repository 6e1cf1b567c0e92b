#include "ros2/recording/internal/told_frames.h"

#include <stdexcept>
#include <utility>

#include "platform/ko/log.h"
#include "ros2/recording/internal/conversions.h"

namespace QV::ros2 {

ToldFrames::ToldFrames(FrameTree known, std::string root, std::string map, std::string category)
    : tree(std::move(known)),
      root(std::move(root)),
      map(std::move(map)),
      category(std::move(category)),
      source(Source::nothing, ""),
      said(Source::map, this->map) {
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
  return !tree.mentions(root) && tree.mentions(moving) ? moving : root;
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

// What hangs on the robot only is nowhere yet.
bool ToldFrames::xPlaceByTf(const std::string& frame, const std::string& in, Source by) {
  const auto placed = tree.find(frame, in);
  if (!placed || in == root || in == moving) return false;
  xSetPose(Math::pose2DFromTransform(*placed), by, in);
  return true;
}

// Frames may hang on the one that only odometry moves.
void ToldFrames::xPlaceRobot() {
  const std::string* const ours[] = {&root, &moving};
  for (const auto* const frame : ours)
    if (xPlaceByTf(*frame, map, Source::map)) return;
  for (const auto* const frame : ours)
    if (xPlaceByTf(*frame, tree.rootOf(*frame), Source::tf)) return;
  if (!hasMoved) return;
  const auto placed = tree.find(root, moving);
  xSetPose(placed ? moved * Math::pose2DFromTransform(*placed) : moved, Source::odometry, movesIn);
}

void ToldFrames::xSetPose(const Math::Pose2D& newPose, Source newSource, const std::string& in) {
  source = {newSource, in};
  const std::lock_guard lock(mutex);
  pose = newPose;
}

void ToldFrames::look() {
  const auto now = ko::Clock::now();
  if (!begun) begun = now;
  if (source == said) return changed.reset();
  if (!changed) changed = now;
  if (now - *changed >= kPatience) xSay();
}

// Who told nothing is not asked where it is.
void ToldFrames::finish() {
  if (begun && source != said) xSay();
}

void ToldFrames::xSay() {
  said = source;
  const auto& [by, in] = source;
  if (by == Source::map) {
    ko::log::info(category, "pose") << "tf says where the robot is in \"" << in << '"';
    return;
  }
  auto line = ko::log::warning(category, "pose");
  const std::string& base = getBase();
  if (by == Source::tf)
    line << "tf does not say where " << base << " is in \"" << map << "\": the pose is in \"" << in
         << '"';
  if (by == Source::odometry)
    line << "tf does not say where " << base << " is: the pose is that of odometry, in \"" << in
         << '"';
  if (by == Source::nothing)
    line << "neither tf nor odometry says where " << root << " is: the pose stays 0,0,0";
}

}  // namespace QV::ros2
