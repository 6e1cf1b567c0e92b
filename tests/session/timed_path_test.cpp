#include "session/internal/timed_path.h"

#include <numbers>

#include <gtest/gtest.h>

namespace QV::session {
namespace {

constexpr float kPi = std::numbers::pi_v<float>;

void expectPose(const Math::Pose2D& actual, const Math::Pose2D& expected) {
  EXPECT_NEAR(actual.x, expected.x, 1e-5f);
  EXPECT_NEAR(actual.y, expected.y, 1e-5f);
  EXPECT_NEAR(actual.theta, expected.theta, 1e-5f);
}

TEST(TimedPath, drivesStraightAndTurnsTheShortWayOnTheSpot) {
  // West for 2 s, a quarter turn to the left over 180 degrees for 1 s, south for 1 s.
  const TimedPath sut({{4, 0}, {2, 0}, {2, -1}}, 1.0, kPi / 2);
  EXPECT_NEAR(sut.getDuration(), 4.0, 1e-5);
  expectPose(sut.poseAt(-1.0), {4, 0, kPi});
  expectPose(sut.poseAt(1.0), {3, 0, kPi});
  expectPose(sut.poseAt(2.5), {2, 0, 1.25f * kPi});
  expectPose(sut.poseAt(3.5), {2, -0.5f, 1.5f * kPi});
  expectPose(sut.poseAt(99.0), {2, -1, 1.5f * kPi});
}

}  // namespace
}  // namespace QV::session
