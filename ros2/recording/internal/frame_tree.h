#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/math/transform.h"
#include "ros2/messages/geometry_msgs.h"

namespace QV::ros2 {

/** The frames of a robot: each by its parent, as last received. A leading slash of a name is
 * ignored. */
class QV_API FrameTree {
 public:
  /** Throws std::runtime_error for the first transform that is none or closes a ring of frames,
   * when the others are added. */
  void add(const tf2_msgs::TFMessage& message);
  /** Adds new frames; known ones stay. */
  void addNew(const tf2_msgs::TFMessage& message);

  bool has(const std::string& frame) const { return links.count(frame) > 0; }
  /** True if a frame is called that, or one hangs on it. */
  bool mentions(const std::string& frame) const;
  /** Returns the pose of `frame` in `other`; std::nullopt if no chain of frames connects them. */
  std::optional<Math::Transform> find(const std::string& frame, const std::string& other) const;
  /** The frame that hangs on nothing above this one. */
  std::string rootOf(const std::string& frame) const;

 private:
  struct Link {
    std::string parent;
    Math::Transform placed;
  };
  /** The value of `inPlace` for known frames. */
  void xAddAll(const tf2_msgs::TFMessage& message, bool inPlace);
  void xAdd(const geometry_msgs::TransformStamped& transform, bool inPlace);
  /** Returns the frames that a frame hangs on, and where it is in each. */
  std::vector<Link> xAncestorsOf(const std::string& frame) const;

  std::map<std::string, Link> links;
};

/** Drops the slash that older robots put before it. */
QV_API std::string withoutSlash(const std::string& frame);

}  // namespace QV::ros2
