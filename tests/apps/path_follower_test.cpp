#include "apps/run/path_follower.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include <gtest/gtest.h>

#include "apps/run/steering.h"

namespace QV::app {
namespace {

constexpr float kPi = std::numbers::pi_v<float>;
constexpr float kStep = 0.02f;

void expectPose(const Math::Pose2D& actual, const Math::Pose2D& expected) {
  EXPECT_NEAR(actual.x, expected.x, 1e-5f);
  EXPECT_NEAR(actual.y, expected.y, 1e-5f);
  EXPECT_NEAR(actual.theta, expected.theta, 1e-5f);
}

TEST(PathFollower, drivesStraightAndTurnsTheShortWayOnTheSpot) {
  // West for 2 s, a quarter turn to the left over 180 degrees for 1 s, south for 1 s.
  const PathFollower sut({{4, 0}, {2, 0}, {2, -1}}, 1.0, kPi / 2);
  EXPECT_NEAR(sut.getDuration(), 4.0, 1e-5);
  expectPose(sut.poseAt(-1.0), {4, 0, kPi});
  expectPose(sut.poseAt(1.0), {3, 0, kPi});
  expectPose(sut.poseAt(2.5), {2, 0, 1.25f * kPi});
  expectPose(sut.poseAt(3.5), {2, -0.5f, 1.5f * kPi});
  expectPose(sut.poseAt(99.0), {2, -1, 1.5f * kPi});
}

TEST(Steering, getsBackOnThePathAndToItsEnd) {
  const PathFollower path({{0, 0}, {4, 0}, {4, 3}, {2, 3}}, 0.5, 1.0);
  // Beside the path, and looking away from it.
  Math::Pose2D pose(-0.2f, 0.3f, 0.8f);
  float farthest = 0.0f;
  for (double seconds = 0.0; seconds < path.getDuration() + 1.0; seconds += kStep) {
    const Math::Pose2D velocity = steer(path, seconds, pose);
    EXPECT_EQ(velocity.y, 0.0f);
    pose = pose * Math::Pose2D(velocity.x * kStep, 0.0f, velocity.theta * kStep);
    const Math::Pose2D off = Math::pinv(path.poseAt(seconds)) * pose;
    if (seconds > 6.0) farthest = std::max(farthest, std::hypot(off.x, off.y));
  }
  EXPECT_LT(farthest, 0.05f);
  EXPECT_NEAR(pose.x, 2.0f, 0.02f);
  EXPECT_NEAR(pose.y, 3.0f, 0.02f);
}

}  // namespace
}  // namespace QV::app
