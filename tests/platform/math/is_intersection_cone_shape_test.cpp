#include "platform/math/internal/is_intersection_cone_shape.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>
#include <stdexcept>
#include <utility>

#include "tests/support/vocabulary.h"

namespace QV::Math {
namespace {

constexpr float kPi = std::numbers::pi_v<float>;
// The tolerance of the answer, metres.
constexpr double kUndecided = 2e-4;

class Random {
 public:
  explicit Random(unsigned seed) : engine(seed) {}

  float between(float low, float high) {
    return std::uniform_real_distribution<float>(low, high)(engine);
  }
  Position3D position(float reach) {
    return {between(-reach, reach), between(-reach, reach), between(-reach, reach)};
  }
  Transform transform(float reach) {
    return Transform::fromPosition(position(reach)) *
           rotationFrom3DRotation(between(-3, 3), between(-3, 3), between(-3, 3));
  }

 private:
  std::mt19937 engine;
};

struct Cone {
  Transform frame;  // apex in the origin, opening along x
  float halfAperture;
  float length;

  static Cone random(Random& random) {
    return {random.transform(0.3f), random.between(0.02f, 1.2f), random.between(0.1f, 1.5f)};
  }

  Position3D apex() const { return position3DFromTransform(frame); }
  Position3D axis() const { return {frame(0, 0), frame(1, 0), frame(2, 0)}; }

  // Exact: in the half plane that holds the axis and the point, the cone is a triangle.
  double distanceTo(const Position3D& point) const {
    const Position3D local = inverse(frame) * point;
    const double along = local.x;
    const double off = std::hypot(local.y, local.z);
    const double slope = std::tan(static_cast<double>(halfAperture));
    if (along >= 0 && along <= length && off <= along * slope) return 0.0;
    const double rim = length * slope;
    const double t =
        std::clamp((along * length + off * rim) / (length * length + rim * rim), 0.0, 1.0);
    const double toSide = std::hypot(along - t * length, off - t * rim);
    const double toEnd = std::hypot(along - length, off - std::min(off, rim));
    return std::min(toSide, toEnd);
  }

  bool meets(const Shape3D& shape, const Transform& placement) const {
    return isIntersectionConeShape(apex(), axis(), halfAperture, shape, placement, length);
  }
};

TEST(IsIntersectionConeShape, agreesWithTheClosedFormForSpheres) {
  Random random(1);
  int hits = 0;
  int misses = 0;
  for (int i = 0; i < 20000; ++i) {
    const Cone cone = Cone::random(random);
    const float radius = random.between(0.0f, 0.4f);
    const Transform placement = random.transform(0.6f);
    const double gap = cone.distanceTo(position3DFromTransform(placement)) - radius;
    if (std::abs(gap) < kUndecided) continue;
    EXPECT_EQ(cone.meets(Sphere{radius}, placement), gap < 0) << "case " << i << ", gap " << gap;
    ++(gap < 0 ? hits : misses);
  }
  EXPECT_GT(hits, 4000);
  EXPECT_GT(misses, 4000);
}

// A needle comes from outside towards the middle and stops just before or behind the surface.
TEST(IsIntersectionConeShape, findsTheSurfaceOfEachShape) {
  struct Case {
    Shape3D shape;
    Position3D onSurface;
  };
  const float shoulder = 0.1f * std::numbers::sqrt2_v<float> / 2;
  const Case cases[] = {
      {Box{{0.2f, 0.4f, 0.6f}}, {0.1f, 0, 0}},
      {Box{{0.2f, 0.4f, 0.6f}}, {0, 0.2f, 0.1f}},
      {Box{{0.2f, 0.4f, 0.6f}}, {-0.1f, 0.2f, -0.3f}},
      {Sphere{0.2f}, {0, 0, -0.2f}},
      {Cylinder{0.1f, 0.6f}, {0, -0.1f, 0.2f}},
      {Cylinder{0.1f, 0.6f}, {0, 0, 0.3f}},
      {Cylinder{0.1f, 0.6f}, {0.06f, 0.08f, -0.3f}},
      {Capsule{0.1f, 0.6f}, {0.1f, 0, 0.25f}},
      {Capsule{0.1f, 0.6f}, {0, 0, -0.4f}},
      {Capsule{0.1f, 0.6f}, {0, shoulder, 0.3f + shoulder}},
  };
  Random random(2);
  for (const Case& c : cases) {
    for (int i = 0; i < 100; ++i) {
      const Transform placement = random.transform(1.0f);
      const Position3D& p = c.onSurface;
      const float out = 1.0f + 1.0f / norm(p);
      const Position3D apex = placement * Position3D(p.x * out, p.y * out, p.z * out);
      const Position3D middle = position3DFromTransform(placement);
      const Position3D axis(middle.x - apex.x, middle.y - apex.y, middle.z - apex.z);
      const auto meets = [&](float length) {
        return isIntersectionConeShape(apex, axis, 0.0f, c.shape, placement, length);
      };
      EXPECT_FALSE(meets(0.999f)) << getKind(c.shape) << " " << i;
      EXPECT_TRUE(meets(1.001f)) << getKind(c.shape) << " " << i;
    }
  }
}

TEST(IsIntersectionConeShape, aBodyInsideTheOtherIntersects) {
  const std::pair<Shape3D, Shape3D> smallAndLarge[] = {
      {Box{{0.01f, 0.01f, 0.01f}}, Box{{5, 5, 5}}},
      {Sphere{0.01f}, Sphere{5}},
      {Sphere{0.0f}, Sphere{1e4f}},
      {Cylinder{0.01f, 0.02f}, Cylinder{5, 10}},
      {Cylinder{0.0f, 0.0f}, Cylinder{1e4f, 1e4f}},
      {Capsule{0.01f, 0.02f}, Capsule{5, 10}},
  };
  const Cone cone{Transform(), 0.3f, 1.0f};
  for (const auto& [small, large] : smallAndLarge) {
    EXPECT_TRUE(cone.meets(small, Transform::fromPosition({0.5f, 0, 0}))) << getKind(small);
    EXPECT_TRUE(cone.meets(large, Transform::fromPosition({0.5f, 0, 0}))) << getKind(large);
    EXPECT_TRUE(cone.meets(large, Transform())) << getKind(large);
  }
}

TEST(IsIntersectionConeShape, refusesWhatItCannotCompute) {
  Transform sheared;
  sheared(0, 1) = 0.2f;
  Transform mirrored;
  mirrored(2, 2) = -1.0f;
  Transform unknown;
  unknown(1, 3) = NAN;
  struct Case {
    const char* text;
    Position3D apex = {0, 0, 0};
    Position3D axis = {1, 0, 0};
    float halfAperture = 0.1f;
    Shape3D shape = Sphere{0.1f};
    Transform placement = Transform();
    float length = 0.1f;
  };
  const Case cases[] = {
      {.text = "the kind \"mesh\" are not", .shape = UnsupportedShape{"mesh"}},
      {.text = "apex is not finite", .apex = {0, NAN, 0}},
      {.text = "axis has no direction", .axis = {0, 0, 0}},
      {.text = "axis has no direction", .axis = {INFINITY, 0, 0}},
      {.text = "half aperture from 0 to below pi/2 expected, -0.1", .halfAperture = -0.1f},
      {.text = "half aperture", .halfAperture = kPi / 2},
      {.text = "half aperture", .halfAperture = NAN},
      {.text = "length above 0 expected, 0.0", .length = 0.0f},
      {.text = "length", .length = INFINITY},
      {.text = "box has a size", .shape = Box{{1, -1, 1}}},
      {.text = "sphere has a size", .shape = Sphere{NAN}},
      {.text = "cylinder has a size", .shape = Cylinder{1, INFINITY}},
      {.text = "capsule has a size", .shape = Capsule{-1, 1}},
      {.text = "not a rigid transform", .placement = sheared},
      {.text = "not a rigid transform", .placement = mirrored},
      {.text = "not a rigid transform", .placement = unknown},
  };
  for (const Case& c : cases) {
    EXPECT_THAT(([&] {
                  isIntersectionConeShape(c.apex, c.axis, c.halfAperture, c.shape, c.placement,
                                          c.length);
                }),
                ThrowsMessage<std::invalid_argument>(HasSubstr(c.text)));
  }
}

}  // namespace
}  // namespace QV::Math
