#include "ros2/recording/internal/frame_tree.h"

#include <algorithm>

#include "ros2/recording/internal/conversions.h"

namespace QV::ros2 {
namespace {

// Longer chains are rings.
constexpr std::size_t kDeepest = 100;

}  // namespace

std::string withoutSlash(const std::string& frame) {
  return frame.starts_with('/') ? frame.substr(1) : frame;
}

FrameTree::Link FrameTree::xLinkOf(const geometry_msgs::TransformStamped& transform) {
  return {withoutSlash(transform.header.frame_id), transformOf(transform.transform)};
}

void FrameTree::add(const tf2_msgs::TFMessage& message) {
  for (const auto& transform : message.transforms)
    links[withoutSlash(transform.child_frame_id)] = xLinkOf(transform);
}

void FrameTree::addNew(const tf2_msgs::TFMessage& message) {
  for (const auto& transform : message.transforms)
    links.emplace(withoutSlash(transform.child_frame_id), xLinkOf(transform));
}

std::vector<FrameTree::Link> FrameTree::xAncestorsOf(const std::string& frame) const {
  std::vector<Link> ancestors{{frame, {}}};
  for (auto link = links.find(frame); link != links.end() && ancestors.size() < kDeepest;
       link = links.find(link->second.parent))
    ancestors.push_back({link->second.parent, link->second.placed * ancestors.back().placed});
  return ancestors;
}

std::optional<Math::Transform> FrameTree::find(const std::string& frame,
                                               const std::string& other) const {
  const auto ofOther = xAncestorsOf(other);
  for (const Link& common : xAncestorsOf(frame)) {
    const auto found = std::ranges::find(ofOther, common.parent, &Link::parent);
    if (found == ofOther.begin()) return common.placed;
    if (found != ofOther.end()) return Math::inverse(found->placed) * common.placed;
  }
  return std::nullopt;
}

std::string FrameTree::rootOf(const std::string& frame) const {
  return xAncestorsOf(frame).back().parent;
}

}  // namespace QV::ros2
