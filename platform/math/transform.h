#pragma once

#include <array>
#include <vector>

#include "platform/api.h"
#include "platform/math/pose2d.h"
#include "platform/math/position.h"

namespace QV::Math {

/**
 * A rigid transform as the upper 3 rows of its homogeneous 4x4 matrix: rotation in columns 0 to 2,
 * translation in metres in column 3. The default is the identity.
 *
 * The transform of S in G, times a position in S, is the position in G. A value; thread-safe to
 * read. Nothing checks that the rotation is one.
 *
 *     const auto sensorInGround = QV::Math::transformFromPose2D({0.2f, 0.0f, 0.0f});
 *     const QV::Math::Position3D echoInSensor(1.0f, 0.0f, 0.0f);
 *     const QV::Math::Position3D echoInGround = sensorInGround * echoInSensor;
 */
struct QV_API Transform {
  /** The 12 floats, by rows. */
  std::array<float, 12> values{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0};

  Transform() = default;
  /** Takes 12 floats by rows; another size throws std::invalid_argument. */
  explicit Transform(const std::vector<float>& byRows);

  /** The element in `row` 0 to 2 and `column` 0 to 3, unchecked. */
  float operator()(int row, int column) const { return values[index(row, column)]; }
  float& operator()(int row, int column) { return values[index(row, column)]; }

  /** The 12 floats by rows, as the constructor takes them. */
  std::vector<float> toVector() const;

  static Transform fromPosition(const Position3D& position);

  friend bool operator==(const Transform&, const Transform&) = default;

 private:
  static std::size_t index(int row, int column) {
    return static_cast<std::size_t>(row) * 4 + static_cast<std::size_t>(column);
  }
};

/** Places transform `a`, given in the frame of `b`, in the frame that `b` is given in. */
QV_API Transform operator*(const Transform& b, const Transform& a);

/** Places position `a`, given in the frame of `b`, in the frame that `b` is given in. */
QV_API Position3D operator*(const Transform& b, const Position3D& a);

/** Inverts a rigid transform. */
QV_API Transform inverse(const Transform& transform);

/** The translation. */
QV_API Position3D position3DFromTransform(const Transform& transform);

/** The pose in the xy plane: the translation's x and y, and the heading of the x axis. */
QV_API Pose2D pose2DFromTransform(const Transform& transform);
QV_API Transform transformFromPose2D(const Pose2D& pose);

/**
 * The transform with its rotation replaced by the nearest rotation about `axis`; the translation
 * stays. `axis` needs no unit length; a zero or non-finite one throws std::invalid_argument.
 */
QV_API Transform axisRotationProjection(const Position3D& axis, const Transform& transform);

/** The rotation Rz(wz) * Ry(wy) * Rx(wx), angles in radians, right-handed. */
QV_API Transform rotationFrom3DRotation(float wx, float wy, float wz);

}  // namespace QV::Math
