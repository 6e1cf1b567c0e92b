#include "examples/avoid_obstacles.h"

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "apps/shared_files.h"
#include "platform/ko/simulated_time.h"
#include "robot/world/map_files.h"

namespace QV {
namespace {

constexpr int kTenMinutes = 6000;

class AvoidObstacles : public testing::TestWithParam<int> {};

TEST_P(AvoidObstacles, wandersForTenMinutesWithoutTouchingAnything) {
  ko::SimulatedTime time;
  const auto map =
      boost::make_shared<OccupancyMap>(robot::loadMap(app::findSharedFile("maps/apartment.yaml")));
  robot::WorldOptions world;
  world.start = {3.0f, 6.3f, 0.0f};
  world.rangeNoise = 0.01f;
  world.dropOuts = 0.02f;
  world.seed = static_cast<std::uint64_t>(GetParam());
  robot::EmbeddedRobot robot(app::findSharedFile("descriptions/porter.urdf"), map, world);
  sensor::RealSensorManager manager(robot.getBroker());
  ObstacleAvoider avoider(manager, robot);
  float driven = 0.0f;
  for (int i = 0; i < kTenMinutes; ++i) {
    const Math::Pose2D before = robot.getPose();
    avoider.step();
    time.advance(boost::chrono::milliseconds(100));
    const Math::Pose2D moved = Math::pinv(before) * robot.getPose();
    driven += std::hypot(moved.x, moved.y);
    ASSERT_TRUE(robot.getTouchedGroups().empty()) << "after " << i << " turns of the loop";
  }
  EXPECT_EQ(robot.getCollisionCount(), 0u);
  EXPECT_GT(driven, 100.0f);
}

INSTANTIATE_TEST_SUITE_P(Seeds, AvoidObstacles, testing::Values(1, 2, 3));

}  // namespace
}  // namespace QV
