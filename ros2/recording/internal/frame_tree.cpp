#include "ros2/recording/internal/frame_tree.h"

#include "ros2/recording/internal/conversions.h"

namespace QV::ros2 {
namespace {

// Longer chains are rings.
constexpr int kDeepest = 100;

}  // namespace

std::string withoutSlash(const std::string& frame) {
  return frame.starts_with('/') ? frame.substr(1) : frame;
}

void FrameTree::add(const tf2_msgs::TFMessage& message) {
  for (const auto& transform : message.transforms) {
    links[withoutSlash(transform.child_frame_id)] = {withoutSlash(transform.header.frame_id),
                                                     transformOf(transform.transform)};
  }
}

std::optional<Math::Transform> FrameTree::find(const std::string& frame,
                                               const std::string& ancestor) const {
  Math::Transform placed;
  std::string at = frame;
  for (int depth = 0; depth < kDeepest; ++depth) {
    if (at == ancestor) return placed;
    const auto link = links.find(at);
    if (link == links.end()) return std::nullopt;
    placed = link->second.placed * placed;
    at = link->second.parent;
  }
  return std::nullopt;
}

std::string FrameTree::rootOf(const std::string& frame) const {
  std::string at = frame;
  for (int depth = 0; depth < kDeepest; ++depth) {
    const auto link = links.find(at);
    if (link == links.end()) return at;
    at = link->second.parent;
  }
  return at;
}

}  // namespace QV::ros2
