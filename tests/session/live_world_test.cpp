#include "session/live_world.h"

#include <cmath>

#include "session/internal/find_route.h"
#include "session/shared_files.h"
#include "session/simulated_session.h"
#include "session/virtual_session.h"
#include "tests/robot/world/room.h"
#include "tests/support/log_capture.h"
#include "tests/support/vocabulary.h"

namespace QV::session {
namespace {

constexpr ko::Duration kSecond{1'000'000'000};
const Math::Pose2D kStart(5.0f, 3.0f, 0.0f);

/** Porter, or a simulated robot of kind 1, in a room of 10 m by 6 m. */
struct LiveWorldTest : testing::TestWithParam<bool> {
  std::unique_ptr<Session> makeRobot() const {
    if (!GetParam()) return std::make_unique<SimulatedSession>(1, *test::makeRoom(), kStart);
    const robot::WorldOptions world{.start = kStart};
    const auto description =
        robot::RobotDescription::fromFile(findSharedFile("descriptions/porter.urdf"));
    return std::make_unique<VirtualSession>(description, *test::makeRoom(), world);
  }
  ko::Duration now() const { return ko::Clock::now().time_since_epoch(); }

  test::LogCapture log;
  ko::SimulatedTime time;
  const std::unique_ptr<Session> robot = makeRobot();
  std::optional<LiveWorld> sut{std::in_place, *robot, time};
};

INSTANTIATE_TEST_SUITE_P(Robots, LiveWorldTest, testing::Bool(),
                         [](const auto& robot) { return robot.param ? "Virtual" : "Simulated"; });

TEST_P(LiveWorldTest, timeGoesByAsItIsTold) {
  sut->run(kSecond);
  EXPECT_EQ(now(), kSecond);
  sut->execute(SpeedCommand{2.5});
  sut->run(kSecond);
  EXPECT_EQ(now(), kSecond * 7 / 2);
  EXPECT_EQ(errorOf([&] { sut->execute(StepCommand{}); }),
            "a paused world expected; pause it first");
  sut->execute(PauseCommand{true});
  sut->run(kSecond);
  EXPECT_EQ(now(), kSecond * 7 / 2);
  sut->execute(StepCommand{});
  EXPECT_EQ(now(), kSecond * 36 / 10);
  EXPECT_TRUE(sut->look().paused);
}

TEST_P(LiveWorldTest, aHandThatLetsGoStopsTheRobot) {
  sut->execute(DriveCommand{0.5f, 0.0f});
  sut->run(kSecond * 4 / 10);
  sut->execute(DriveCommand{0.5f, 0.0f});
  sut->run(kSecond * 4 / 10);
  EXPECT_EQ(sut->look().velocity.x, 0.5f);
  sut->run(kSecond);
  const Snapshot after = sut->look();
  EXPECT_EQ(after.velocity.x, 0.0f);
  EXPECT_NEAR(after.pose.x, kStart.x + 0.5f * 0.9f, 0.03f);
}

TEST_P(LiveWorldTest, aPauseIsNoHold) {
  sut->execute(DriveCommand{0.5f, 0.0f});
  sut->execute(PauseCommand{true});
  sut->run(kSecond);
  sut->execute(PauseCommand{false});
  sut->run(kSecond);
  EXPECT_EQ(sut->look().pose.x, kStart.x);
}

TEST_P(LiveWorldTest, aWallStopsTheRobot) {
  for (int i = 0; i < 20; ++i) {
    sut->execute(DriveCommand{1.0f, 0.0f});
    sut->run(kSecond * 4 / 10);
  }
  const Snapshot at = sut->look();
  EXPECT_NEAR(at.pose.x, 10.0f - robot->getRadius(), 0.1f);
  if (!GetParam()) return;
  ASSERT_EQ(at.touches.size(), 1u);
  EXPECT_GT(at.touches[0].position.x, at.pose.x);
  EXPECT_GT(at.touches[0].since, 1.0);
  for (int i = 0; i < 4; ++i) {
    sut->execute(DriveCommand{-1.0f, 0.0f});
    sut->run(kSecond * 4 / 10);
  }
  EXPECT_THAT(sut->look().touches, IsEmpty());
}

TEST_P(LiveWorldTest, goesToAGoalBehindIt) {
  sut->execute(GoalCommand{{2.0f, 4.5f}});
  EXPECT_EQ(sut->look().goal, Math::Position2D(2.0f, 4.5f));
  sut->run(kSecond * 20);
  const Snapshot there = sut->look();
  EXPECT_EQ(there.goal, std::nullopt);
  EXPECT_NEAR(there.pose.x, 2.0f, 0.1f);
  EXPECT_NEAR(there.pose.y, 4.5f, 0.1f);
  EXPECT_EQ(there.velocity, Math::Pose2D());
  EXPECT_EQ(errorOf([&] {
              sut->execute(GoalCommand{{20.0f, 3.0f}});
            }),
            "a place that the robot can get to expected, 20.00, 3.00 m given");
}

TEST_P(LiveWorldTest, sensorsRunForTheirSubscribersOnly) {
  auto& manager = robot->getManager();
  const std::string name = GetParam() ? "FrontLaser" : *manager.getSensorList().begin();
  const auto seen = [&] {
    for (const SensorState& sensor : sut->look().sensors) {
      if (sensor.name == name) return sensor;
    }
    return SensorState();
  };
  EXPECT_FALSE(seen().started);
  sut->execute(SubscribeCommand{name, true});
  sut->setDemand({{"foxglove viewer", {name}}});
  for (int i = 0; i < 100; ++i) {
    sut->run(kSecond * 23 / 1000);
    seen();
  }
  const SensorState running = seen();
  EXPECT_TRUE(running.started);
  EXPECT_THAT(running.subscribers, ElementsAre("foxglove viewer", "live view"));
  EXPECT_NEAR(running.rate, 10.0, 0.1);
  EXPECT_LT(*running.age, 0.3);
  sut->execute(SpeedCommand{10.0});
  sut->run(kSecond);
  EXPECT_NEAR(seen().rate, 10.0, 0.5) << "looked at once in ten seconds";
  sut->execute(SpeedCommand{1.0});
  sut->execute(DiagnoseCommand{name, false});
  EXPECT_FALSE(seen().started);
  sut->execute(DiagnoseCommand{name, true});
  EXPECT_TRUE(seen().started);
  sut->setDemand({});
  EXPECT_THAT(seen().subscribers, ElementsAre("live view"));
  sut.reset();
  EXPECT_FALSE(manager.isSensorStarted(name));
  EXPECT_THAT(manager.getSubscribers(), IsEmpty());
}

TEST(LiveWorld, givesUpAGoalWhoseWayStaysBlocked) {
  test::LogCapture log;
  ko::SimulatedTime time;
  robot::WorldOptions world;
  world.start = kStart;
  world.boxes = {{{6.5f, 3.0f, 0.0f}}};
  VirtualSession robot(
      robot::RobotDescription::fromFile(findSharedFile("descriptions/porter.urdf")),
      *test::makeRoom(), world);
  LiveWorld sut(robot, time);
  sut.execute(GoalCommand{{8.0f, 3.0f}});
  sut.run(kSecond * 15);
  EXPECT_TRUE(sut.look().goal);
  sut.run(kSecond * 5);
  EXPECT_FALSE(sut.look().goal);
  EXPECT_THAT(log.lines(ko::log::Level::warning),
              ElementsAre("warning LiveView.xGiveUp: something is in the way to 8.00, 3.00 m: the "
                          "goal is dropped"));
}

TEST(FindRoute, goesAroundAWallAndKeepsItsDistance) {
  OccupancyMap map(100, 60, 0.1f, {1.0f, 2.0f, 0.0f}, 0.0f);
  for (int row = 0; row < 50; ++row) map.setOccupancy(50, row, 1.0f);
  const Math::Position2D from(3.0f, 3.0f);
  const Math::Position2D to(9.0f, 3.0f);
  const auto route = findRoute(map, from, to, 0.3f);
  ASSERT_GE(route.size(), 3u);
  EXPECT_EQ(route.front(), from);
  EXPECT_EQ(route.back(), to);
  float length = 0.0f;
  for (std::size_t i = 1; i < route.size(); ++i) {
    length += std::hypot(route[i].x - route[i - 1].x, route[i].y - route[i - 1].y);
  }
  // Over the end of the wall and back, by the shortest way.
  EXPECT_NEAR(length, 2.0f * std::hypot(3.0f, 4.3f), 0.6f);
  EXPECT_THAT(findRoute(map, from, to, 0.6f), IsEmpty());
  EXPECT_THAT(findRoute(map, from, {6.05f, 3.0f}, 0.3f), IsEmpty());
}

}  // namespace
}  // namespace QV::session
