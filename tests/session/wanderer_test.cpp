#include "session/internal/wanderer.h"

#include <cmath>
#include <optional>

#include <gtest/gtest.h>

#include "tests/support/walled_map.h"

namespace QV::session {
namespace {

constexpr float kRadius = 0.3f;
// Seconds between two steps.
constexpr float kPeriod = 0.1f;

/** A round body that a Wanderer drives through a map, past somebody who is not in it. */
struct Drive {
  OccupancyMap map = test::makeWalledMap(80, 80, 0.05f);
  Math::Pose2D pose;
  std::optional<Math::Position2D> person;

  float toPerson(const Math::Pose2D& from) const {
    return std::hypot(person->x - from.x, person->y - from.y);
  }

  bool isBlocked(const Math::Pose2D& there) const {
    return person && toPerson(there) < 2.0f * kRadius && toPerson(there) < toPerson(pose);
  }

  /** Returns how far it comes from where it begins, at most. */
  float getFarthest(int steps) {
    const Math::Pose2D start = pose;
    Wanderer sut(map);
    Math::Pose2D velocity;
    float farthest = 0.0f;
    for (int i = 0; i < steps; ++i) {
      velocity = sut.step(pose, velocity);
      const Math::Pose2D there =
          pose * Math::Pose2D(velocity.x * kPeriod, 0.0f, velocity.theta * kPeriod);
      if (isBlocked(there)) {
        velocity.x = 0.0f;
      } else {
        pose = there;
      }
      farthest = std::max(farthest, std::hypot(pose.x - start.x, pose.y - start.y));
    }
    return farthest;
  }
};

TEST(Wanderer, turnsAwayFromSomebodyWhoStandsInItsWay) {
  // Beside a wall, where it can turn to one side only.
  for (const float heading : {0.6f, 1.2f, 1.8f}) {
    Drive drive;
    drive.pose = {0.45f, 2.0f, heading};
    drive.person = drive.pose * Math::Position2D(0.62f, 0.0f);
    EXPECT_GT(drive.getFarthest(600), 1.0f) << heading;
  }
}

TEST(Wanderer, leavesANicheThatIsNarrowerThanItLikes) {
  Drive drive;
  // Open to the left only.
  for (int column = 40; column < 80; ++column) {
    for (const int row : {32, 46}) drive.map.setOccupancy(column, row, 1.0f);
  }
  drive.pose = {3.2f, 1.975f, 0.02f};
  EXPECT_GT(drive.getFarthest(1200), 1.2f);
}

}  // namespace
}  // namespace QV::session
