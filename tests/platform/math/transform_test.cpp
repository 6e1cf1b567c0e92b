#include "platform/math/transform.h"

#include <cmath>
#include <numbers>
#include <stdexcept>
#include <type_traits>

#include <gmock/gmock.h>
#include <rapidcheck/gtest.h>

#include "platform/math/metrical_data.h"
#include "tests/support/vocabulary.h"

namespace QV::Math {
namespace {

constexpr float kHalfTurn = std::numbers::pi_v<float>;

static_assert(std::is_trivially_copyable_v<Pose2D> && std::is_trivially_copyable_v<Position3D> &&
              std::is_trivially_copyable_v<Transform> &&
              std::is_trivially_copyable_v<SensorFieldOfView2D>);

void expectNear(const Position3D& actual, const Position3D& expected, float tolerance = 1e-5f) {
  EXPECT_NEAR(actual.x, expected.x, tolerance);
  EXPECT_NEAR(actual.y, expected.y, tolerance);
  EXPECT_NEAR(actual.z, expected.z, tolerance);
}

float angleFrom(int thousandths) {
  return static_cast<float>(thousandths) * 0.001f;
}

TEST(Pose2D, compositionBringsThePoseIntoTheOuterFrameAndKeepsTheAngleSum) {
  const Pose2D outer(1.0f, 2.0f, kHalfTurn / 2);
  const Pose2D composed = outer * Pose2D(3.0f, 0.0f, kHalfTurn);
  EXPECT_NEAR(composed.x, 1.0f, 1e-6f);
  EXPECT_NEAR(composed.y, 5.0f, 1e-6f);
  EXPECT_FLOAT_EQ(composed.theta, 1.5f * kHalfTurn);
}

RC_GTEST_PROP(Pose2D, aPoseAndItsInverseCancel, ()) {
  const Pose2D pose(static_cast<float>(*rc::gen::inRange(-100, 100)),
                    static_cast<float>(*rc::gen::inRange(-100, 100)),
                    angleFrom(*rc::gen::inRange(-7000, 7000)));
  const Pose2D identity = pinv(pose) * pose;
  RC_ASSERT(std::abs(identity.x) < 1e-4f);
  RC_ASSERT(std::abs(identity.y) < 1e-4f);
  RC_ASSERT(identity.theta == 0.0f);
}

TEST(Transform, isBuiltFromTwelveFloatsInRowMajorOrder) {
  const std::vector<float> byRows{0.5f, -1, 2, 4, 1, 3, -2, 5, 2, 0.25f, 7, 6};
  expectNear(Transform(byRows) * Position3D(1, 2, 3), Position3D(8.5f, 6, 29.5f));
  EXPECT_EQ(Transform(byRows).toVector(), byRows);
  EXPECT_THAT([] { Transform(std::vector<float>(11)); },
              ThrowsMessage<std::invalid_argument>(HasSubstr("12 floats expected, 11 given")));
  EXPECT_THAT([] { Pose2D(std::vector<float>(2)); },
              ThrowsMessage<std::invalid_argument>(HasSubstr("2 given")));
}

TEST(Transform, aPoseConvertedToATransformAndBackIsUnchanged) {
  const Pose2D pose = pose2DFromTransform(transformFromPose2D(Pose2D(1.5f, -2.5f, 0.7f)));
  EXPECT_FLOAT_EQ(pose.x, 1.5f);
  EXPECT_FLOAT_EQ(pose.y, -2.5f);
  EXPECT_FLOAT_EQ(pose.theta, 0.7f);
  for (int i = 0; i < 100; ++i) {
    EXPECT_EQ((transformFromPose2D(Pose2D(0, 0, angleFrom(63 * i))) * Position3D(1, 2, 3)).z, 3.0f);
  }
}

TEST(Transform, rotationFrom3DRotationTurnsAboutXThenYThenZ) {
  expectNear(rotationFrom3DRotation(0, 0, kHalfTurn / 2) * Position3D(2, 0, 0),
             Position3D(0, 2, 0));
  expectNear(rotationFrom3DRotation(0, kHalfTurn / 2, 0) * Position3D(2, 0, 0),
             Position3D(0, 0, -2));
  expectNear(rotationFrom3DRotation(kHalfTurn / 2, 0, 0) * Position3D(0, 2, 0),
             Position3D(0, 0, 2));
  const Position3D position(1, 2, 3);
  expectNear(
      rotationFrom3DRotation(0.3f, -0.5f, 0.7f) * position,
      rotationFrom3DRotation(0, 0, 0.7f) *
          (rotationFrom3DRotation(0, -0.5f, 0) * (rotationFrom3DRotation(0.3f, 0, 0) * position)));
}

TEST(AxisRotationProjection, anAxisOfLengthZeroIsRefused) {
  EXPECT_THROW(axisRotationProjection({0, 0, 0}, Transform()), std::invalid_argument);
  EXPECT_THROW(axisRotationProjection({NAN, 0, 1}, Transform()), std::invalid_argument);
}

RC_GTEST_PROP(AxisRotationProjection, givesTheNearestRotationAboutTheAxis, ()) {
  const Position3D axis(static_cast<float>(*rc::gen::inRange(-9, 10)),
                        static_cast<float>(*rc::gen::inRange(-9, 10)), 2.5f);
  const Transform rotation = rotationFrom3DRotation(angleFrom(*rc::gen::inRange(-3000, 3000)),
                                                    angleFrom(*rc::gen::inRange(-1500, 1500)),
                                                    angleFrom(*rc::gen::inRange(-3000, 3000)));
  const auto distance = [&](const Transform& other) {
    float sum = 0.0f;
    for (int row = 0; row < 3; ++row) {
      for (int column = 0; column < 3; ++column) {
        const float difference = other(row, column) - rotation(row, column);
        sum += difference * difference;
      }
    }
    return sum;
  };
  const Transform projected = axisRotationProjection(axis, rotation);
  const Position3D along = projected * axis;
  RC_ASSERT(norm(Position3D(along.x - axis.x, along.y - axis.y, along.z - axis.z)) < 1e-3f);
  // A rotation about the axis by any further angle is no nearer.
  const float length = norm(axis);
  const Position3D unit(axis.x / length, axis.y / length, axis.z / length);
  const float yaw = std::atan2(unit.y, unit.x);
  const float pitch = std::acos(unit.z);
  const Transform toAxis = rotationFrom3DRotation(0, pitch, yaw);
  const Transform further =
      toAxis * rotationFrom3DRotation(0, 0, angleFrom(*rc::gen::inRange(-3000, 3000))) *
      inverse(toAxis) * projected;
  RC_ASSERT(distance(projected) <= distance(further) + 1e-3f);
}

TEST(MetricalData, givesItsAgeAndItsPointsInAnotherFrame) {
  MetricalData record;
  record.sensorTransform = transformFromPose2D(Pose2D(1.0f, 2.0f, kHalfTurn / 2));
  record.points = {Position3D(0.5f, 0.25f, 0.75f)};
  record.timestamp = ko::Clock::time_point(ko::Duration(40));
  ASSERT_EQ(pointsInFrame(record).size(), 1u);
  expectNear(pointsInFrame(record)[0], Position3D(0.75f, 2.5f, 0.75f));
  EXPECT_EQ(age(record, ko::Clock::time_point(ko::Duration(100))), ko::Duration(60));
  record.timestamp = ko::Clock::time_point::min();
  EXPECT_EQ(age(record, ko::Clock::time_point(ko::Duration(100))), ko::Duration::max());
}

TEST(Pose2D, isMadeOfThreeNumbersInOrder) {
  EXPECT_EQ(Pose2D(std::vector<float>{1.0f, 2.0f, 3.0f}), Pose2D(1.0f, 2.0f, 3.0f));
}

}  // namespace
}  // namespace QV::Math
