#pragma once

#include "platform/api.h"

namespace QV::Math {

/** A position in the plane, metres. */
struct QV_API Position2D {
  float x = 0.0f;
  float y = 0.0f;

  Position2D() = default;
  Position2D(float x, float y) : x(x), y(y) {}
  /** `radius` in metres, `angle` in radians from x towards y. */
  static Position2D fromPolarCoordinates(float radius, float angle);

  friend bool operator==(const Position2D&, const Position2D&) = default;
};

/** A position in space, metres. */
struct QV_API Position3D {
  float x = 0.0f;
  float y = 0.0f;
  float z = 0.0f;

  Position3D() = default;
  Position3D(float x, float y, float z) : x(x), y(y), z(z) {}
  /** A position of the plane lifted to height `z`. */
  Position3D(const Position2D& position, float z) : x(position.x), y(position.y), z(z) {}

  friend bool operator==(const Position3D&, const Position3D&) = default;
};

/** Metres. */
QV_API float norm(const Position2D& position);
QV_API float norm(const Position3D& position);

}  // namespace QV::Math
