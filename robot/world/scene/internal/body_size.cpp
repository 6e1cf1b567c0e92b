#include "robot/world/scene/internal/body_size.h"

#include <algorithm>
#include <cmath>
#include <variant>

namespace QV::robot {
namespace {

constexpr BodySize kSmallest{0.25f, 0.3f};
constexpr float kUpright = 0.999f;

/** The reach of a solid from its centre, in its own xy plane and along its z axis. */
struct Extent {
  float radius;
  float halfHeight;
};

struct ExtentOf {
  Extent operator()(const Math::Box& box) const {
    return {0.5f * std::hypot(box.size.x, box.size.y), 0.5f * box.size.z};
  }
  Extent operator()(const Math::Sphere& sphere) const { return {sphere.radius, sphere.radius}; }
  Extent operator()(const Math::Cylinder& cylinder) const {
    return {cylinder.radius, 0.5f * cylinder.length};
  }
  Extent operator()(const Math::Capsule& capsule) const {
    return {capsule.radius, 0.5f * capsule.length + capsule.radius};
  }
  Extent operator()(const Math::UnsupportedShape&) const { return {0.0f, 0.0f}; }
};

// A solid that lies or leans may reach as far as its corners in any direction.
Extent extentOf(const Math::Shape3D& shape, const Math::Transform& frame) {
  const Extent extent = std::visit(ExtentOf(), shape);
  if (std::abs(frame(2, 2)) > kUpright) return extent;
  const float corner = std::hypot(extent.radius, extent.halfHeight);
  return {corner, corner};
}

}  // namespace

BodySize measureBody(const Model::Robot& robot, const MotionService& motion) {
  BodySize size{0.0f, kSmallest.height};
  for (const auto& [name, shape] : robot.collisionShapes) {
    const std::string& joint = shape->getParentJoint();
    const Math::Transform frame = motion.getTransform(joint.empty() ? robot.rootLink : joint,
                                                      MotionService::kGroundFrame, true) *
                                  shape->getTransform();
    const Extent extent = extentOf(shape->getShape(), frame);
    size.height = std::max(size.height, frame(2, 3) + extent.halfHeight);
    if (!joint.empty()) continue;
    size.radius = std::max(size.radius, std::hypot(frame(0, 3), frame(1, 3)) + extent.radius);
  }
  if (size.radius == 0.0f) size.radius = kSmallest.radius;
  return size;
}

}  // namespace QV::robot
