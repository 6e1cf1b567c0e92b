#include "platform/math/transform.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>

namespace QV::Math {
namespace {

Transform rotationAbout(const Position3D& unit, float angle) {
  const float c = std::cos(angle);
  const float s = std::sin(angle);
  const float t = 1.0f - c;
  Transform result;
  result(0, 0) = t * unit.x * unit.x + c;
  result(0, 1) = t * unit.x * unit.y - s * unit.z;
  result(0, 2) = t * unit.x * unit.z + s * unit.y;
  result(1, 0) = t * unit.x * unit.y + s * unit.z;
  result(1, 1) = t * unit.y * unit.y + c;
  result(1, 2) = t * unit.y * unit.z - s * unit.x;
  result(2, 0) = t * unit.x * unit.z - s * unit.y;
  result(2, 1) = t * unit.y * unit.z + s * unit.x;
  result(2, 2) = t * unit.z * unit.z + c;
  return result;
}

Position3D unitAxis(const Position3D& axis) {
  const float length = norm(axis);
  if (!std::isfinite(length) || length == 0.0f) {
    throw std::invalid_argument("axisRotationProjection: the axis has no direction");
  }
  return {axis.x / length, axis.y / length, axis.z / length};
}

// The angle that maximises the trace of (rotation about the axis)^T * rotation.
float nearestAngle(const Position3D& unit, const Transform& rotation) {
  const Position3D skew(rotation(2, 1) - rotation(1, 2), rotation(0, 2) - rotation(2, 0),
                        rotation(1, 0) - rotation(0, 1));
  const float sine = unit.x * skew.x + unit.y * skew.y + unit.z * skew.z;
  Transform linear = rotation;
  for (int row = 0; row < 3; ++row) linear(row, 3) = 0.0f;
  const Position3D turned = linear * unit;
  const float along = unit.x * turned.x + unit.y * turned.y + unit.z * turned.z;
  const float cosine = rotation(0, 0) + rotation(1, 1) + rotation(2, 2) - along;
  return std::atan2(sine, cosine);
}

}  // namespace

Transform::Transform(const std::vector<float>& byRows) {
  if (byRows.size() != values.size()) {
    throw std::invalid_argument("Transform: 12 floats expected, " + std::to_string(byRows.size()) +
                                " given");
  }
  std::copy(byRows.begin(), byRows.end(), values.begin());
}

std::vector<float> Transform::toVector() const {
  return {values.begin(), values.end()};
}

Transform Transform::fromPosition(const Position3D& position) {
  Transform result;
  result(0, 3) = position.x;
  result(1, 3) = position.y;
  result(2, 3) = position.z;
  return result;
}

Transform operator*(const Transform& b, const Transform& a) {
  Transform result;
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 4; ++column) {
      const float carried = column == 3 ? b(row, 3) : 0.0f;
      result(row, column) =
          b(row, 0) * a(0, column) + b(row, 1) * a(1, column) + b(row, 2) * a(2, column) + carried;
    }
  }
  return result;
}

Position3D operator*(const Transform& b, const Position3D& a) {
  const auto along = [&](int row) {
    return b(row, 0) * a.x + b(row, 1) * a.y + b(row, 2) * a.z + b(row, 3);
  };
  return {along(0), along(1), along(2)};
}

Transform inverse(const Transform& transform) {
  Transform result;
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 3; ++column) result(row, column) = transform(column, row);
  }
  const Position3D back = result * position3DFromTransform(transform);
  result(0, 3) = -back.x;
  result(1, 3) = -back.y;
  result(2, 3) = -back.z;
  return result;
}

Position3D position3DFromTransform(const Transform& transform) {
  return {transform(0, 3), transform(1, 3), transform(2, 3)};
}

Pose2D pose2DFromTransform(const Transform& transform) {
  return {transform(0, 3), transform(1, 3), std::atan2(transform(1, 0), transform(0, 0))};
}

Transform transformFromPose2D(const Pose2D& pose) {
  // The products are written out, so that a coordinate that is not turned stays exact.
  Transform result;
  result(0, 0) = result(1, 1) = std::cos(pose.theta);
  result(1, 0) = std::sin(pose.theta);
  result(0, 1) = -result(1, 0);
  result(0, 3) = pose.x;
  result(1, 3) = pose.y;
  return result;
}

Transform axisRotationProjection(const Position3D& axis, const Transform& transform) {
  const Position3D unit = unitAxis(axis);
  Transform result = rotationAbout(unit, nearestAngle(unit, transform));
  for (int row = 0; row < 3; ++row) result(row, 3) = transform(row, 3);
  return result;
}

Transform rotationFrom3DRotation(float wx, float wy, float wz) {
  return rotationAbout(Position3D(0.0f, 0.0f, 1.0f), wz) *
         rotationAbout(Position3D(0.0f, 1.0f, 0.0f), wy) *
         rotationAbout(Position3D(1.0f, 0.0f, 0.0f), wx);
}

}  // namespace QV::Math
