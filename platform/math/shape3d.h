#pragma once

#include <string>
#include <variant>

#include "platform/api.h"
#include "platform/math/position.h"

namespace QV::Math {

/** Edge lengths in metres along the axes of its frame, which sits in its centre. */
struct QV_API Box {
  Position3D size;

  friend bool operator==(const Box&, const Box&) = default;
};

/** About the origin of its frame, metres. */
struct QV_API Sphere {
  float radius = 0.0f;

  friend bool operator==(const Sphere&, const Sphere&) = default;
};

/** A cylinder along the z axis of its frame, which sits in its centre; metres. */
struct QV_API Cylinder {
  float radius = 0.0f;
  float length = 0.0f;

  friend bool operator==(const Cylinder&, const Cylinder&) = default;
};

/** A cylinder with a half sphere on either end; `length` does not count those. Metres. */
struct QV_API Capsule {
  float radius = 0.0f;
  float length = 0.0f;

  friend bool operator==(const Capsule&, const Capsule&) = default;
};

/** A shape that is known by its kind only ("mesh", ...): nothing can be computed with it. */
struct QV_API UnsupportedShape {
  std::string kind;

  friend bool operator==(const UnsupportedShape&, const UnsupportedShape&) = default;
};

/** A solid in a frame of its own. */
using Shape3D = std::variant<Box, Sphere, Cylinder, Capsule, UnsupportedShape>;

/** "box", "sphere", "cylinder", "capsule", or the kind of an unsupported shape. */
QV_API std::string getKind(const Shape3D& shape);

}  // namespace QV::Math
