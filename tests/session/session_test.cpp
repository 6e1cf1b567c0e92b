#include "session/session.h"

#include <cmath>
#include <functional>

#include "session/internal/command.h"
#include "session/internal/find_route.h"
#include "session/internal/goal_search.h"
#include "session/internal/room_in.h"
#include "session/internal/route_cells.h"
#include "session/internal/session_listener.h"
#include "session/usage_error.h"
#include "tests/session/session_in_room.h"
#include "tests/support/log_capture.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/vocabulary.h"

namespace QV::session {
namespace {

constexpr ko::Duration kSecond{1'000'000'000};
const Math::Pose2D kSessionStart(5.0f, 3.0f, 0.0f);

SensorState sensorIn(const Snapshot& snapshot, const std::string& name) {
  for (const SensorState& sensor : snapshot.sensors) {
    if (sensor.name == name) return sensor;
  }
  return SensorState();
}

/** Porter, or a simulated robot of kind 1, in a room of 10 m by 6 m. */
struct SessionTest : testing::TestWithParam<bool> {
  static std::unique_ptr<Session> open() {
    return GetParam() ? openVirtual("porter", test::inRoom(kSessionStart))
                      : openSimulated(1, test::inRoom(kSessionStart));
  }
  static ko::Duration now() { return ko::Clock::now().time_since_epoch(); }
  /** A hand on the wheel. */
  void driveOn(float forward, int times = 1) {
    for (int i = 0; i < times; ++i) {
      sut->drive(forward, 0.0f);
      sut->keepPace(kSecond * 4 / 10);
    }
  }

  test::LogCapture log;
  std::unique_ptr<Session> sut = open();
};

INSTANTIATE_TEST_SUITE_P(Robots, SessionTest, testing::Bool(),
                         [](const auto& robot) { return robot.param ? "Virtual" : "Simulated"; });

TEST_P(SessionTest, timeFollowsSpeedPauseAndSteps) {
  sut->keepPace(kSecond);
  EXPECT_EQ(now(), kSecond);
  sut->setSpeed(2.5);
  sut->keepPace(kSecond);
  EXPECT_EQ(now(), kSecond * 7 / 2);
  EXPECT_EQ(errorOf([&] { execute(*sut, "page", StepCommand{}); }),
            "can't step while time runs; pause first");
  sut->pause(true);
  sut->keepPace(kSecond);
  EXPECT_EQ(now(), kSecond * 7 / 2);
  execute(*sut, "page", StepCommand{});
  EXPECT_EQ(now(), kSecond * 36 / 10);
  EXPECT_TRUE(sut->look().paused);
}

TEST_P(SessionTest, theRobotStopsWhenDriveCommandsEnd) {
  driveOn(0.5f, 2);
  EXPECT_EQ(sut->look().velocity.x, 0.5f);
  sut->keepPace(kSecond);
  const Snapshot after = sut->look();
  EXPECT_EQ(after.velocity.x, 0.0f);
  EXPECT_NEAR(after.pose.x, kSessionStart.x + 0.5f * 0.9f, 0.03f);
}

TEST_P(SessionTest, aVelocityHoldsOnlyForItsDuration) {
  sut->setSpeed(5.0);
  sut->drive({0.4f, 0.1f, 0.0f}, kSecond / 2);
  sut->keepPace(kSecond / 5 * 4 / 10);
  EXPECT_EQ(sut->look().velocity, Math::Pose2D(0.4f, 0.1f, 0.0f));
  sut->keepPace(kSecond / 5 * 2 / 10);
  EXPECT_EQ(sut->look().velocity, Math::Pose2D());
}

struct CountingListener : SessionListener {
  void onWrite(const std::string&, const QVValue&, bool) override { ++writes; }
  void onImage(int, const QVValue&) override {}
  void onStep(const robot::BodyStep&) override { ++steps; }
  void onCommand(const SessionCommand& command) override {
    ++commands;
    last = command;
  }
  int writes = 0, steps = 0, commands = 0;
  SessionCommand last;
};

TEST(SessionListeners, everyListenerHearsTheRunAndALateOneGetsThePresentState) {
  const auto sut = openVirtual("porter", test::inRoom(kSessionStart));
  CountingListener first, second;
  addListener(*sut, first);
  const int writes = first.writes;
  EXPECT_GT(writes, 0);
  addListener(*sut, second);
  EXPECT_EQ(first.writes, writes);
  EXPECT_EQ(second.writes, writes);
  sut->drive(0.1f, 0.0f);
  sut->run(kSecond);
  EXPECT_EQ(second.commands, 1);
  EXPECT_GT(second.steps, 40);
  EXPECT_EQ(first.steps, second.steps);
  removeListener(*sut, first);
  const int steps = first.steps;
  sut->run(kSecond);
  EXPECT_EQ(first.steps, steps);
  EXPECT_GT(second.steps, steps);
  removeListener(*sut, second);
}

TEST_P(SessionTest, aPauseDoesNotUseUpTheHoldTime) {
  sut->drive(0.5f, 0.0f);
  sut->pause(true);
  sut->keepPace(kSecond);
  sut->pause(false);
  sut->keepPace(kSecond);
  EXPECT_EQ(sut->look().pose.x, kSessionStart.x);
}

TEST_P(SessionTest, aWallStopsTheRobot) {
  driveOn(1.0f, 20);
  const Snapshot at = sut->look();
  EXPECT_NEAR(at.pose.x, 10.0f - sut->getRadius(), 0.1f);
  if (!GetParam()) return;
  ASSERT_EQ(at.touches.size(), 1u);
  EXPECT_GT(at.touches[0].position.x, at.pose.x);
  EXPECT_GT(at.touches[0].since, 1.0);
  driveOn(-1.0f, 4);
  EXPECT_THAT(sut->look().touches, IsEmpty());
}

TEST_P(SessionTest, goesToAGoalBehindIt) {
  sut->setGoal({2.0f, 4.5f});
  EXPECT_EQ(sut->look().goal, Math::Position2D(2.0f, 4.5f));
  EXPECT_THAT(sut->look().route,
              ElementsAre(Math::position2DFromPose2D(kSessionStart), Math::Position2D(2.0f, 4.5f)));
  sut->keepPace(kSecond * 20);
  const Snapshot there = sut->look();
  EXPECT_EQ(there.goal, std::nullopt);
  EXPECT_THAT(there.route, IsEmpty());
  EXPECT_NEAR(there.pose.x, 2.0f, 0.1f);
  EXPECT_NEAR(there.pose.y, 4.5f, 0.1f);
  EXPECT_EQ(there.velocity, Math::Pose2D());
  sut->setGoal({there.pose.x + 0.03f, there.pose.y - 0.03f});
  EXPECT_EQ(sut->look().goal, std::nullopt) << "the robot is there already";
  EXPECT_EQ(errorOf([&] {
              sut->setGoal({20.0f, 3.0f});
            }),
            "the robot can't get to 20.00, 3.00 m: no free path");
}

TEST_P(SessionTest, findsARouteOnAnotherThreadAndAgainIfTheRobotHasMoved) {
  sut->drive(0.5f, 0.0f);
  GoalSearch search(*sut, {2.0f, 4.5f});
  sut->keepPace(kSecond / 2);
  ASSERT_TRUE(search.waitFor(std::chrono::minutes(1)));
  EXPECT_FALSE(search.finish());
  const Math::Pose2D standing = sut->getPose();
  sut->keepPace(kSecond);
  EXPECT_EQ(sut->getPose(), standing);
  ASSERT_TRUE(search.waitFor(std::chrono::minutes(1)));
  CountingListener listener;
  addListener(*sut, listener);
  EXPECT_TRUE(search.finish());
  EXPECT_EQ(listener.last.name, "goal");
  EXPECT_TRUE(listener.last.on);
  EXPECT_THAT(listener.last.values, ElementsAre(2.0, 4.5));
  removeListener(*sut, listener);
  const Snapshot at = sut->look();
  EXPECT_EQ(at.goal, Math::Position2D(2.0f, 4.5f));
  EXPECT_EQ(at.route.front(), Math::position2DFromPose2D(at.pose));
  GoalSearch none(*sut, {20.0f, 3.0f});
  ASSERT_TRUE(none.waitFor(std::chrono::minutes(1)));
  EXPECT_EQ(errorOf([&] { none.finish(); }), "the robot can't get to 20.00, 3.00 m: no free path");
  EXPECT_EQ(sut->look().goal, at.goal);
}

TEST_P(SessionTest, whoTakesTheWheelTakesItFromAGoal) {
  const std::vector<std::function<void()>> takers{
      [&] { sut->drive(0.0f, 0.1f); },
      [&] {
        sut->drive({0.0f, 0.0f, 0.1f}, kSecond);
      },
      [&] { sut->wander(); },
      [&] {
        sut->follow({{4.0f, 3.0f}, {5.0f, 3.0f}}, 0.5, 1.0);
      },
      [&] { sut->stop(); },
  };
  for (std::size_t i = 0; i < takers.size(); ++i) {
    sut->setGoal({2.0f, 4.5f});
    ASSERT_NE(sut->look().goal, std::nullopt);
    takers[i]();
    EXPECT_EQ(sut->look().goal, std::nullopt) << i;
    GoalSearch search(*sut, {2.0f, 4.5f});
    takers[i]();
    EXPECT_TRUE(search.finish());
    EXPECT_EQ(sut->look().goal, std::nullopt) << i;
  }
  GoalSearch older(*sut, {2.0f, 4.5f});
  const GoalSearch newer(*sut, {2.0f, 3.5f});
  EXPECT_TRUE(older.finish());
  EXPECT_EQ(sut->look().goal, std::nullopt);
}

TEST_P(SessionTest, aFaultIsListedUntilItIsCleared) {
  const FaultCommand stuck{"FrontSonar", robot::FaultKind::stuck};
  if (!GetParam()) {
    EXPECT_THAT(errorOf([&] { execute(*sut, "page", stuck); }), HasSubstr("a virtual robot"));
    return;
  }
  EXPECT_THAT(sut->look().faults, IsEmpty());
  execute(*sut, "page", stuck);
  EXPECT_THAT(sut->look().faults, ElementsAre(testing::Pair("FrontSonar", "stuck")));
  execute(*sut, "page", FaultCommand{"FrontSonar", std::nullopt});
  EXPECT_THAT(sut->look().faults, IsEmpty());
}

TEST_P(SessionTest, sensorsRunForTheirSubscribersOnly) {
  auto& manager = sut->getManager();
  const std::string name = GetParam() ? "FrontLaser" : *manager.getSensorList().begin();
  const auto seen = [&] { return sensorIn(sut->look(), name); };
  EXPECT_FALSE(seen().started);
  sut->subscribe("mine", {name});
  sut->setDemand({{"page 3", {name}}});
  for (int i = 0; i < 100; ++i) {
    sut->keepPace(kSecond * 23 / 1000);
    seen();
  }
  const SensorState running = seen();
  EXPECT_TRUE(running.started);
  EXPECT_THAT(running.subscribers, ElementsAre("mine", "page 3"));
  EXPECT_NEAR(running.rate, 10.0, 0.1);
  EXPECT_LT(*running.age, 0.3);
  sut->setSpeed(10.0);
  sut->keepPace(kSecond);
  EXPECT_NEAR(seen().rate, 10.0, 0.5) << "looked at once in ten seconds";
  sut->diagnose(name, false);
  EXPECT_FALSE(seen().started);
  sut->diagnose(name, true);
  sut->run(kSecond);
  EXPECT_THAT(seen().records, Not(IsEmpty())) << "the refresh goes on, too";
  sut->setDemand({{"page 4", {name}}});
  EXPECT_THAT(seen().subscribers, ElementsAre("mine", "page 4"));
  sut->setDemand({});
  sut->unsubscribe("mine", {name});
  EXPECT_FALSE(manager.isSensorStarted(name));
  EXPECT_THAT(manager.getSubscribers(), IsEmpty());
  EXPECT_THAT(errorOf([&] { sut->subscribe("mine", {"Radar"}); }),
              StartsWith("no sensor or family \"Radar\"; this robot has the families "));
}

TEST_P(SessionTest, faultsNeedAVirtualRobot) {
  sut->subscribe("mine", {"Sonar"});
  if (!GetParam()) {
    EXPECT_THAT(sut->getFaultySensors(), IsEmpty());
    EXPECT_THAT(errorOf([&] { sut->clearFault("Sonar/Front"); }),
                StartsWith("faults need a virtual robot; "));
    return;
  }
  EXPECT_THAT(sut->getFaultySensors(), Contains("BackSonar"));
  sut->setFault({"BackSonar", sut->getPossibleFaults("BackSonar").front()});
  sut->run(kSecond);
  EXPECT_THAT(sensorIn(sut->look(), "BackSonar").records, IsEmpty());
  sut->clearFault("BackSonar");
  sut->run(kSecond);
  EXPECT_THAT(sensorIn(sut->look(), "BackSonar").records, Not(IsEmpty()));
}

TEST(Session, dropsAGoalWhoseWayStaysBlocked) {
  test::LogCapture log;
  OpenOptions options = test::inRoom(kSessionStart);
  options.world.boxes = {{{6.5f, 3.0f, 0.0f}}};
  const auto sut = openVirtual("porter", options);
  sut->setGoal({8.0f, 3.0f});
  sut->keepPace(kSecond * 15);
  EXPECT_TRUE(sut->look().goal);
  sut->keepPace(kSecond * 5);
  EXPECT_FALSE(sut->look().goal);
  EXPECT_THAT(log.lines(ko::log::Level::warning),
              ElementsAre("warning Session.run: the way to 8.00, 3.00 m stayed blocked for 15 s: "
                          "goal dropped"));
}

TEST(Session, aRecordingStepsThroughItsLogAndHasNoMap) {
  const test::TemporaryFolder folder;
  const auto log = folder.write("log",
                                "FLASER 3 1.0 2.0 81.0 0.1 0 0 0 0 0 1.0 host 1.0\n"
                                "FLASER 3 1.5 2.5 3.5 1.1 2 0 1 2 0 1.2 host 1.2\n");
  const auto sut = openRecording(log);
  sut->subscribe("mine", {"Laser"});
  const Snapshot first = sut->look();
  EXPECT_EQ(first.map, nullptr);
  EXPECT_EQ(first.sensors.at(0).points, Model::PointMeaning::scan);
  EXPECT_EQ(first.sensors.at(0).nearest, 1.0f);
  EXPECT_TRUE(sut->step());
  EXPECT_EQ(sut->look().sensors.at(0).nearest, 1.5f);
  EXPECT_EQ(sut->look().pose.y, 2.0f);
  EXPECT_EQ(sut->getShareDone(), 1.0);
  EXPECT_FALSE(sut->step());
  EXPECT_EQ(errorOf([&] { sut->drive(1.0f, 0.0f); }), "a recording can't be moved or driven");
  EXPECT_EQ(errorOf([&] { sut->setGoal({1.0f, 0.0f}); }), "goals need a map; this robot has none");
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
  // The shortest way leads around the wall's end.
  EXPECT_NEAR(length, 2.0f * std::hypot(3.0f, 4.3f), 0.6f);
  EXPECT_THAT(findRoute(map, from, to, 0.6f), IsEmpty());
  EXPECT_THAT(findRoute(map, from, {6.05f, 3.0f}, 0.3f), IsEmpty());
  EXPECT_THAT(findRoute(map, {0.95f, 3.0f}, to, 0.3f), IsEmpty()) << "half a cell off the map";
}

TEST(FindRoute, seesTheSameRoomInTilesAsOnTheWholeMap) {
  constexpr float kMost = 0.7f;
  OccupancyMap map(300, 140, 0.1f, {}, 0.0f);
  for (int i = 0; i < 60; ++i) map.setOccupancy(i * 7919 % 300, i * 104729 % 140, 1.0f);
  const cv::Mat_<float> whole = roomIn(map, {0, 0, map.getWidth(), map.getHeight()}, kMost);
  RouteCells sut(map, kMost);
  for (cv::Point cell; cell.y < map.getHeight(); ++cell.y) {
    for (cell.x = 0; cell.x < map.getWidth(); ++cell.x) {
      ASSERT_EQ(sut.at(cell).room, whole(cell)) << cell;
    }
  }
}

}  // namespace
}  // namespace QV::session
