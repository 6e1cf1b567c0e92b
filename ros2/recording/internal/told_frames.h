#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "platform/api.h"
#include "platform/ko/clock.h"
#include "platform/math/pose2d.h"
#include "ros2/messages/scene_msgs.h"
#include "ros2/recording/internal/frame_tree.h"

namespace QV::ros2 {

/**
 * Where a robot and its frames are, by the tf and odometry of others. Its base is the frame `root`
 * or, where tf does not mention it, the child frame of odometry. Only getPose() is thread-safe.
 */
class QV_API ToldFrames {
 public:
  /** `map` is the map's frame, `category` is for the log. */
  ToldFrames(FrameTree tree, std::string root, std::string map, std::string category);

  /** Errors as FrameTree::add. */
  void add(const tf2_msgs::TFMessage& message);
  void add(const nav_msgs::Odometry& odometry);
  /** Says, once on each change that stays, if tf does not place the robot in the map. */
  void look();
  /** Says at the end what there was no time to say. */
  void finish();

  /** The pose in the map; else in the frame that all others hang on, or in that of odometry. */
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
  enum class Source { nothing, odometry, tf, map };
  /** Frames and odometry come one after the other. */
  static constexpr ko::Duration kPatience{2'000'000'000};

  void xPlaceRobot();
  bool xPlaceByTf(const std::string& frame, const std::string& in, Source by);
  void xSetPose(const Math::Pose2D& newPose, Source newSource, const std::string& in);
  void xSay();

  FrameTree tree;
  const std::string root;
  const std::string map;
  const std::string category;
  /** The child frame of odometry, and where it is. */
  std::string moving;
  std::string movesIn;
  Math::Pose2D moved;
  bool hasMoved = false;
  /** What the pose is by, and the frame that it is in. */
  std::pair<Source, std::string> source;
  /** The source that was said, or that needs no words. */
  std::pair<Source, std::string> said;
  std::optional<ko::Clock::time_point> begun;
  std::optional<ko::Clock::time_point> changed;

  mutable std::mutex mutex;
  Math::Pose2D pose;
};

}  // namespace QV::ros2
