#include "platform/math/internal/is_intersection_cone_shape.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <numbers>
#include <stdexcept>
#include <string>
#include <variant>

#include <fcl/geometry/shape/box.h>
#include <fcl/geometry/shape/capsule.h>
#include <fcl/geometry/shape/cone.h>
#include <fcl/geometry/shape/cylinder.h>
#include <fcl/geometry/shape/sphere.h>
#include <fcl/narrowphase/collision.h>

namespace QV::Math {
namespace {

constexpr double kRigidTolerance = 1e-3;

[[noreturn]] void refuse(const std::string& reason) {
  throw std::invalid_argument("isIntersectionConeShape: " + reason);
}

Eigen::Vector3d toEigen(const Position3D& position) {
  return {position.x, position.y, position.z};
}

struct PlacedCone {
  fcl::Coned cone;
  fcl::Transform3d placement;
};

// The library's cone sits in the middle of its axis, the apex towards +z.
PlacedCone placeCone(const Position3D& apex, const Position3D& axis, float halfAperture,
                     float length) {
  const Eigen::Vector3d tip = toEigen(apex);
  if (!tip.allFinite()) refuse("the apex is not finite");
  const double axisLength = toEigen(axis).norm();
  if (!std::isfinite(axisLength) || axisLength == 0.0) refuse("the axis has no direction");
  if (!(halfAperture >= 0.0f && halfAperture < std::numbers::pi_v<float> / 2)) {
    refuse("a half aperture from 0 to below pi/2 expected, " + std::to_string(halfAperture) +
           " given");
  }
  if (!(length > 0.0f && std::isfinite(length))) {
    refuse("a length above 0 expected, " + std::to_string(length) + " given");
  }
  const Eigen::Vector3d direction = toEigen(axis) / axisLength;
  fcl::Transform3d placement = fcl::Transform3d::Identity();
  placement.translate(tip + direction * (length / 2.0));
  placement.rotate(Eigen::Quaterniond::FromTwoVectors(Eigen::Vector3d::UnitZ(), -direction));
  return {fcl::Coned(length * std::tan(static_cast<double>(halfAperture)), length), placement};
}

fcl::Transform3d toRigid(const Transform& placement) {
  fcl::Transform3d result = fcl::Transform3d::Identity();
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 4; ++column) result(row, column) = placement(row, column);
  }
  const Eigen::Matrix3d rotation = result.linear();
  const double deviation =
      (rotation.transpose() * rotation - Eigen::Matrix3d::Identity()).cwiseAbs().maxCoeff();
  if (!result.matrix().allFinite() || !(deviation < kRigidTolerance) ||
      rotation.determinant() < 0.0) {
    refuse("the placement is not a rigid transform");
  }
  return result;
}

class Intersection {
 public:
  Intersection(const PlacedCone& cone, const fcl::Transform3d& placement)
      : cone(cone), placement(placement) {}

  bool operator()(const Box& box) const {
    xCheck("box", {box.size.x, box.size.y, box.size.z});
    return xCollides(fcl::Boxd(box.size.x, box.size.y, box.size.z));
  }
  bool operator()(const Sphere& sphere) const {
    xCheck("sphere", {sphere.radius});
    return xCollides(fcl::Sphered(sphere.radius));
  }
  bool operator()(const Cylinder& cylinder) const {
    xCheck("cylinder", {cylinder.radius, cylinder.length});
    return xCollides(fcl::Cylinderd(cylinder.radius, cylinder.length));
  }
  bool operator()(const Capsule& capsule) const {
    xCheck("capsule", {capsule.radius, capsule.length});
    return xCollides(fcl::Capsuled(capsule.radius, capsule.length));
  }
  bool operator()(const UnsupportedShape& shape) const {
    refuse("shapes of the kind \"" + shape.kind + "\" are not supported");
  }

 private:
  static void xCheck(const char* kind, std::initializer_list<float> sizes) {
    const bool good = std::all_of(sizes.begin(), sizes.end(),
                                  [](float size) { return size >= 0.0f && std::isfinite(size); });
    if (!good) refuse("the " + std::string(kind) + " has a size that is negative or not finite");
  }

  bool xCollides(const fcl::CollisionGeometryd& shape) const {
    fcl::CollisionResultd result;
    fcl::collide(&cone.cone, cone.placement, &shape, placement, fcl::CollisionRequestd(), result);
    return result.isCollision();
  }

  const PlacedCone& cone;
  const fcl::Transform3d& placement;
};

}  // namespace

bool isIntersectionConeShape(const Position3D& apex, const Position3D& axis, float halfAperture,
                             const Shape3D& shape, const Transform& placement, float length) {
  const PlacedCone cone = placeCone(apex, axis, halfAperture, length);
  const fcl::Transform3d rigid = toRigid(placement);
  return std::visit(Intersection(cone, rigid), shape);
}

}  // namespace QV::Math
