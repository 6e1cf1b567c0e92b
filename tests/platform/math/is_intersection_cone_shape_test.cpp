#include "platform/math/is_intersection_cone_shape.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>
#include <stdexcept>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

namespace QV::Math {
namespace {

using testing::HasSubstr;
using testing::ThrowsMessage;

constexpr float kPi = std::numbers::pi_v<float>;
// What the answer may be wrong by, metres.
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

double nearest(const Cone& cone, const std::vector<Position3D>& points,
               const Transform& placement) {
  double result = INFINITY;
  for (const Position3D& point : points) {
    result = std::min(result, cone.distanceTo(placement * point));
  }
  return result;
}

std::vector<Position3D> gridOver(const Position3D& size, int steps) {
  std::vector<Position3D> result;
  const auto at = [steps](float extent, int i) {
    return extent * (static_cast<float>(i) / static_cast<float>(steps) - 0.5f);
  };
  for (int i = 0; i <= steps; ++i) {
    for (int j = 0; j <= steps; ++j) {
      for (int k = 0; k <= steps; ++k) {
        result.emplace_back(at(size.x, i), at(size.y, j), at(size.z, k));
      }
    }
  }
  return result;
}

// Onto the solid cylinder of the given radius: the square's grid becomes one of discs.
std::vector<Position3D> gridOver(const Cylinder& cylinder, int steps) {
  std::vector<Position3D> result =
      gridOver(Position3D(2 * cylinder.radius, 2 * cylinder.radius, cylinder.length), steps);
  for (Position3D& point : result) {
    const float square = std::max(std::abs(point.x), std::abs(point.y));
    const float round = std::hypot(point.x, point.y);
    if (round == 0.0f) continue;
    point.x *= square / round;
    point.y *= square / round;
  }
  return result;
}

// Counts, so that a test cannot pass by looking at one answer only.
struct Tally {
  int hits = 0;
  int misses = 0;

  // `least` and `most` enclose the distance between cone and shape.
  void expect(bool answer, double least, double most, int which) {
    if (least > kUndecided) {
      ++misses;
      EXPECT_FALSE(answer) << "case " << which << ", " << least << " m apart";
    } else if (most < -kUndecided || most == 0.0) {
      ++hits;
      EXPECT_TRUE(answer) << "case " << which;
    }
  }
};

TEST(IsIntersectionConeShape, agreesWithTheClosedFormForSpheres) {
  Random random(1);
  Tally tally;
  for (int i = 0; i < 20000; ++i) {
    const Cone cone = Cone::random(random);
    const float radius = random.between(0.0f, 0.4f);
    const Transform placement = random.transform(0.6f);
    const double distance = cone.distanceTo(position3DFromTransform(placement)) - radius;
    tally.expect(cone.meets(Sphere{radius}, placement), distance, distance, i);
  }
  EXPECT_GT(tally.hits, 4000);
  EXPECT_GT(tally.misses, 4000);
}

TEST(IsIntersectionConeShape, agreesWithASampledAxisForCapsules) {
  Random random(2);
  Tally tally;
  for (int i = 0; i < 2000; ++i) {
    const Cone cone = Cone::random(random);
    const Capsule capsule{random.between(0.01f, 0.3f), random.between(0.0f, 0.5f)};
    const Transform placement = random.transform(0.6f);
    const int steps = 500;
    const double step = capsule.length / steps;
    std::vector<Position3D> axis;
    for (int k = 0; k <= steps; ++k) {
      axis.emplace_back(0.0f, 0.0f, static_cast<float>(k * step - capsule.length / 2));
    }
    const double distance = nearest(cone, axis, placement) - capsule.radius;
    tally.expect(cone.meets(capsule, placement), distance - step / 2, distance, i);
  }
  EXPECT_GT(tally.hits, 400);
  EXPECT_GT(tally.misses, 400);
}

TEST(IsIntersectionConeShape, agreesWithSampledSolidsForBoxesAndCylinders) {
  Random random(3);
  Tally boxes;
  Tally cylinders;
  const int steps = 20;
  for (int i = 0; i < 400; ++i) {
    const Cone cone = Cone::random(random);
    const Transform placement = random.transform(0.6f);
    const Box box{{random.between(0, 0.5f), random.between(0, 0.5f), random.between(0, 0.5f)}};
    const double boxDistance = nearest(cone, gridOver(box.size, steps), placement);
    boxes.expect(cone.meets(box, placement), boxDistance - norm(box.size) / steps, boxDistance, i);

    const Cylinder cylinder{random.between(0, 0.3f), random.between(0, 0.5f)};
    const double distance = nearest(cone, gridOver(cylinder, steps), placement);
    const double coarse = std::hypot(4 * cylinder.radius, cylinder.length) / steps;
    cylinders.expect(cone.meets(cylinder, placement), distance - coarse, distance, i);
  }
  EXPECT_GT(std::min(boxes.hits, cylinders.hits), 80);
  EXPECT_GT(std::min(boxes.misses, cylinders.misses), 80);
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

TEST(IsIntersectionConeShape, theConeEndsFlatAndDoesNotReachBehindItsApex) {
  const auto meets = [](const Position3D& centre) {
    return isIntersectionConeShape({1, 0, 0}, {0, 0, 7}, kPi / 4, Sphere{0.1f},
                                   Transform::fromPosition(centre), 1.0f);
  };
  EXPECT_TRUE(meets({1, 0, 1.099f}));
  EXPECT_FALSE(meets({1, 0, 1.101f}));
  // A round end of the same length would leave this corner out.
  EXPECT_TRUE(meets({1.95f, 0, 1.0f}));
  EXPECT_FALSE(meets({1, 0, -0.101f}));
  EXPECT_FALSE(meets({1, 0, -1.0f}));
}

TEST(IsIntersectionConeShape, withoutApertureIsASegment) {
  const auto meets = [](float height) {
    return isIntersectionConeShape({}, {1, 0, 0}, 0.0f, Box{{0.2f, 0.2f, 0.2f}},
                                   Transform::fromPosition({0.5f, 0, height}), 1.0f);
  };
  EXPECT_TRUE(meets(0.099f));
  EXPECT_FALSE(meets(0.101f));
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
