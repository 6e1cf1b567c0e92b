#include "session/internal/steering.h"

#include <cmath>

#include <gtest/gtest.h>

namespace QV::session {
namespace {

constexpr float kStep = 0.02f;

Math::Pose2D moved(const Math::Pose2D& pose, const Math::Pose2D& velocity) {
  return pose * Math::Pose2D(velocity.x * kStep, velocity.y * kStep, velocity.theta * kStep);
}

TEST(Steering, returnsToThePathAndReachesItsEnd) {
  const TimedPath path({{0, 0}, {4, 0}, {4, 3}, {2, 3}}, 0.5, 1.0);
  // The start is beside the path, turned away from it.
  Math::Pose2D pose(-0.2f, 0.3f, 0.8f);
  float farthest = 0.0f;
  for (double seconds = 0.0; seconds < path.getDuration() + 1.0; seconds += kStep) {
    const Math::Pose2D velocity = steer(path, seconds, pose);
    EXPECT_EQ(velocity.y, 0.0f);
    pose = moved(pose, velocity);
    const Math::Pose2D off = Math::pinv(path.poseAt(seconds)) * pose;
    if (seconds > 6.0) farthest = std::max(farthest, std::hypot(off.x, off.y));
  }
  EXPECT_LT(farthest, 0.05f);
  EXPECT_NEAR(pose.x, 2.0f, 0.02f);
  EXPECT_NEAR(pose.y, 3.0f, 0.02f);
}

}  // namespace
}  // namespace QV::session
