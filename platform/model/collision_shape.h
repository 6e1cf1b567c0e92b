#pragma once

#include <string>
#include <utility>

#include "platform/api.h"
#include "platform/math/shape3d.h"
#include "platform/math/transform.h"

namespace QV::Model {

/** A solid part of the robot's body. Immutable, so it may be shared between threads. */
class QV_API CollisionShape {
 public:
  CollisionShape(std::string name, Math::Shape3D shape, const Math::Transform& transform,
                 std::string parentJoint)
      : name(std::move(name)),
        shape(std::move(shape)),
        transform(transform),
        parentJoint(std::move(parentJoint)) {}

  const std::string& getName() const { return name; }
  const Math::Shape3D& getShape() const { return shape; }
  /** The pose of the shape in the frame of its parent joint (m, rad). */
  const Math::Transform& getTransform() const { return transform; }
  /** The joint that carries it; empty for a shape of the root link. */
  const std::string& getParentJoint() const { return parentJoint; }

 private:
  std::string name;
  Math::Shape3D shape;
  Math::Transform transform;
  std::string parentJoint;
};

}  // namespace QV::Model
