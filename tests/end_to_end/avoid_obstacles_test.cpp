#include "examples/avoid_obstacles.h"

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "platform/ko/simulated_time.h"
#include "robot/maps/map_files.h"
#include "session/shared_files.h"

namespace QV {
namespace {

struct AvoidObstacles : testing::TestWithParam<std::uint64_t> {
  static robot::WorldOptions world() {
    return {
        .start = {3.0f, 6.3f, 0.0f}, .seed = GetParam(), .rangeNoise = 0.01f, .dropOuts = 0.02f};
  }

  /** Metres that it drives in so many turns of its loop. */
  float run(int turns) {
    float driven = 0.0f;
    for (int i = 0; i < turns; ++i) {
      const Math::Pose2D before = robot.getPose();
      avoider.step();
      time.advance(boost::chrono::milliseconds(100));
      const Math::Pose2D moved = Math::pinv(before) * robot.getPose();
      driven += std::hypot(moved.x, moved.y);
      EXPECT_TRUE(robot.getTouchedGroups().empty()) << "after " << i << " turns of the loop";
    }
    return driven;
  }

  ko::SimulatedTime time;
  robot::VirtualRobot robot{session::findSharedFile("descriptions/porter.urdf"),
                            boost::make_shared<OccupancyMap>(
                                robot::loadMap(session::findSharedFile("maps/apartment.yaml"))),
                            world()};
  sensor::RealSensorManager manager{robot.getBroker()};
  ObstacleAvoider avoider{manager, robot};
};

TEST_P(AvoidObstacles, wandersForTenMinutesWithoutTouchingAnything) {
  EXPECT_GT(run(6000), 100.0f);
  EXPECT_EQ(robot.getCollisionCount(), 0u);
}

TEST_P(AvoidObstacles, standsWhileALaserIsSilent) {
  run(50);
  robot.setFault("FrontLaser", robot::FaultKind::off);
  run(5);
  EXPECT_EQ(run(100), 0.0f);
  robot.clearFault("FrontLaser");
  EXPECT_GT(run(100), 1.0f);
}

INSTANTIATE_TEST_SUITE_P(Seeds, AvoidObstacles, testing::Values(1u, 2u, 3u));

}  // namespace
}  // namespace QV
