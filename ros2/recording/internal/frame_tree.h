#pragma once

#include <map>
#include <optional>
#include <string>

#include "platform/math/transform.h"
#include "ros2/messages/geometry_msgs.h"

namespace QV::ros2 {

/** The frames of a recording: each by its parent, as last told. A slash before a name is nothing.
 */
class FrameTree {
 public:
  void add(const tf2_msgs::TFMessage& message);

  bool has(const std::string& frame) const { return links.count(frame) > 0; }
  /** Where `frame` is in `ancestor`; nothing if that is none. */
  std::optional<Math::Transform> find(const std::string& frame, const std::string& ancestor) const;
  /** The frame that hangs on nothing above this one. */
  std::string rootOf(const std::string& frame) const;

 private:
  struct Link {
    std::string parent;
    Math::Transform placed;
  };
  std::map<std::string, Link> links;
};

/** Without the slash that older robots put before it. */
std::string withoutSlash(const std::string& frame);

}  // namespace QV::ros2
