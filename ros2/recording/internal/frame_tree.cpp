#include "ros2/recording/internal/frame_tree.h"

#include <algorithm>
#include <stdexcept>

#include "ros2/recording/internal/conversions.h"
#include "ros2/recording/internal/message_checks.h"

namespace QV::ros2 {
namespace {

// Longer chains are rings.
constexpr std::size_t kDeepest = 100;
// More than any robot and its world have.
constexpr std::size_t kMostFrames = 10'000;
constexpr std::size_t kLongestName = 256;

}  // namespace

std::string withoutSlash(const std::string& frame) {
  return frame.starts_with('/') ? frame.substr(1) : frame;
}

void FrameTree::add(const tf2_msgs::TFMessage& message) {
  xAddAll(message, true);
}

void FrameTree::addNew(const tf2_msgs::TFMessage& message) {
  xAddAll(message, false);
}

void FrameTree::xAddAll(const tf2_msgs::TFMessage& message, bool inPlace) {
  std::string wrong;
  for (const auto& transform : message.transforms) {
    try {
      xAdd(transform, inPlace);
    } catch (const std::runtime_error& error) {
      if (wrong.empty()) wrong = error.what();
    }
  }
  if (!wrong.empty()) throw std::runtime_error(wrong);
}

void FrameTree::xAdd(const geometry_msgs::TransformStamped& transform, bool inPlace) {
  const std::string child = withoutSlash(transform.child_frame_id);
  const std::string parent = withoutSlash(transform.header.frame_id);
  if (!inPlace && has(child)) return;
  if (child.empty() || parent.empty())
    throw std::runtime_error("frames with names expected, \"" + child + "\" in \"" + parent +
                             "\" given");
  if (std::max(child.size(), parent.size()) > kLongestName)
    throw std::runtime_error("names of frames of up to " + std::to_string(kLongestName) +
                             " letters expected, a longer one given");
  if (links.size() >= kMostFrames && !has(child))
    throw std::runtime_error("frame " + child + ": up to " + std::to_string(kMostFrames) +
                             " frames expected, more given");
  auto placed = transform.transform;
  try {
    checkPosition(placed.translation);
    placed.rotation = soundRotation(placed.rotation);
  } catch (const std::runtime_error& error) {
    throw std::runtime_error("frame " + child + ": " + error.what());
  }
  if (std::ranges::count(xAncestorsOf(parent), child, &Link::parent) > 0)
    throw std::runtime_error("frame " + child + ": a tree of frames expected, a loop through " +
                             parent + " given");
  links[child] = {parent, transformOf(placed)};
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

bool FrameTree::mentions(const std::string& frame) const {
  return has(frame) ||
         std::ranges::any_of(links, [&](const auto& link) { return link.second.parent == frame; });
}

std::string FrameTree::rootOf(const std::string& frame) const {
  return xAncestorsOf(frame).back().parent;
}

}  // namespace QV::ros2
