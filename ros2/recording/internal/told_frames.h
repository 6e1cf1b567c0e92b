#pragma once

#include <mutex>
#include <optional>
#include <string>

#include "platform/api.h"
#include "platform/ko/clock.h"
#include "platform/math/pose2d.h"
#include "ros2/messages/scene_msgs.h"
#include "ros2/recording/internal/frame_tree.h"

namespace QV::ros2 {

/**
 * Where a robot and its frames are, by the tf and odometry of others. Its base is the frame `root`
 * or, where tf has none of that name, the child frame of odometry. Only getPose() is thread-safe.
 */
class QV_API ToldFrames {
 public:
  /** `category` is for the log. */
  ToldFrames(FrameTree tree, std::string root, std::string category);

  /** Errors as FrameTree::add. */
  void add(const tf2_msgs::TFMessage& message);
  void add(const nav_msgs::Odometry& odometry);
  /** Says, once on each change that stays, if tf does not place the robot. */
  void look();

  /** The pose in the frame that all others hang on, or in that of odometry. */
  Math::Pose2D getPose() const;
  const std::string& getBase() const;
  /** Returns the pose of `frame` in the base; std::nullopt if tf does not connect them. */
  std::optional<Math::Transform> find(const std::string& frame) const {
    return tree.find(frame, getBase());
  }
  /** The same; std::runtime_error if they are not connected. */
  Math::Transform get(const std::string& frame) const;
  bool knowsBase() const { return tree.mentions(getBase()); }
  /** True at the start, when tf may not have named all frames yet. */
  bool isEarly() const { return !begun || ko::Clock::now() - *begun < kPatience; }

 private:
  enum class Source { nothing, odometry, tf };
  /** Frames and odometry come one after the other. */
  static constexpr ko::Duration kPatience{2'000'000'000};

  void xPlaceRobot();
  void xSetPose(const Math::Pose2D& newPose, Source newSource);
  void xSay() const;

  FrameTree tree;
  const std::string root;
  const std::string category;
  /** The child frame of odometry, and where it is. */
  std::string moving;
  std::string movesIn;
  Math::Pose2D moved;
  bool hasMoved = false;
  Source source = Source::nothing;
  /** The source that was said, or that needs no words. */
  Source said = Source::tf;
  std::optional<ko::Clock::time_point> begun;
  std::optional<ko::Clock::time_point> changed;

  mutable std::mutex mutex;
  Math::Pose2D pose;
};

}  // namespace QV::ros2
