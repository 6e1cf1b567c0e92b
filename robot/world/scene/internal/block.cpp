#include "robot/world/scene/internal/block.h"

#include <algorithm>
#include <limits>

namespace QV::robot {
namespace {

/** Cuts a stretch to where a coordinate that starts at `start` lies from `low` to `high`. */
bool cut(Stretch& stretch, float start, float speed, float low, float high) {
  if (speed == 0.0f) return low <= start && start <= high;
  const auto [first, last] = std::minmax({(low - start) / speed, (high - start) / speed});
  stretch.from = std::max(stretch.from, first);
  stretch.to = std::min(stretch.to, last);
  return stretch.from <= stretch.to;
}

Math::Position2D flat(const Math::Position3D& position) {
  return {position.x, position.y};
}

}  // namespace

Block::Block(const Math::Pose2D& pose, float length, float width, float bottom, float top)
    : pose(pose),
      inverse(Math::pinv(pose)),
      halfLength(length * 0.5f),
      halfWidth(width * 0.5f),
      bottom(bottom),
      top(top) {}

std::optional<Stretch> Block::clip(const Ray& ray) const {
  auto stretch = clipOutline(ray);
  if (stretch && cut(*stretch, ray.origin.z, ray.direction.z, bottom, top)) return stretch;
  return std::nullopt;
}

std::optional<Stretch> Block::clipOutline(const Ray& ray) const {
  const Math::Position2D start = inverse * flat(ray.origin);
  const Math::Position2D speed = Math::Pose2D(0.0f, 0.0f, inverse.theta) * flat(ray.direction);
  Stretch stretch{0.0f, std::numeric_limits<float>::infinity()};
  if (cut(stretch, start.x, speed.x, -halfLength, halfLength) &&
      cut(stretch, start.y, speed.y, -halfWidth, halfWidth)) {
    return stretch;
  }
  return std::nullopt;
}

Math::Position2D Block::nearestTo(const Math::Position2D& position) const {
  const Math::Position2D local = inverse * position;
  return pose * Math::Position2D(std::clamp(local.x, -halfLength, halfLength),
                                 std::clamp(local.y, -halfWidth, halfWidth));
}

}  // namespace QV::robot
