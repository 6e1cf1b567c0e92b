#include "robot/logs/internal/log_replay.h"

#include <cmath>

#include "platform/model/model_utils.h"
#include "robot/services/internal/motion_service.h"
#include "tests/support/fake_robot.h"

namespace QV::robot {
namespace {

/** Two sensors, one with a time key, and a robot that drives an arc. */
Recording makeRecording() {
  Recording recording;
  recording.sensors = {{"Sonar", "", 0, {}, {}, {"range"}},
                       {"Laser", "", 0, {}, {{"timestamp", "stamp"}}, {"x", "y"}}};
  recording.steps = {{milliseconds(0), {4.0f, 1.0f, 3.0f}, {0.5f, 1.0f, 2.0f}},
                     {milliseconds(500), {4.0f, 1.0f, -3.0f}, {0.6f, 1.5f, 2.5f}},
                     {milliseconds(500), {4.0f, 1.5f, -3.0f}, {0.7f, 1.7f, 2.7f}},
                     {milliseconds(1500), {4.0f, 2.5f, -3.0f}, {0.8f, 1.8f, 2.8f}}};
  return recording;
}

struct LogReplayTest : test::FakeRobotTest {
  boost::shared_ptr<MotionService> body = boost::make_shared<MotionService>(
      Model::ModelUtils::robotFromXml(makeRecording().toDescription()));
};

TEST_F(LogReplayTest, eachStepWritesTheKeysWithItsOwnTime) {
  LogReplay sut(makeRecording(), broker, body);
  const auto valuesAfterNext = [&] {
    EXPECT_TRUE(sut.next());
    std::vector<float> values;
    for (const char* key : {"range", "x", "y", "stamp"}) {
      values.push_back(memory.getData(key).toFloat());
    }
    return values;
  };
  time.advance(milliseconds(5));
  EXPECT_EQ(sut.getNextTime(), ko::Clock::time_point(milliseconds(100)));
  EXPECT_EQ(sut.getPose(), Math::Pose2D());
  EXPECT_THAT(valuesAfterNext(), ElementsAre(0.5f, 1.0f, 2.0f, 150.0f));
  EXPECT_EQ(sut.getPose(), Math::Pose2D(4.0f, 1.0f, 3.0f));
  EXPECT_EQ(sut.getNextTime(), ko::Clock::time_point(milliseconds(600)));
  valuesAfterNext();
  valuesAfterNext();
  EXPECT_THAT(valuesAfterNext(), ElementsAre(0.8f, 1.8f, 2.8f, 1650.0f));
  EXPECT_TRUE(memory.getData("stamp").isInt());
  EXPECT_EQ(sut.getStepsMade(), sut.getStepCount());
  EXPECT_FALSE(sut.getNextTime());
  EXPECT_FALSE(sut.next());
}

TEST_F(LogReplayTest, theVelocityFollowsFromTheMoveSinceTheLastStep) {
  LogReplay sut(makeRecording(), broker, body);
  const auto velocityAfterNext = [&] {
    sut.next();
    return body->getRobotVelocity();
  };
  EXPECT_EQ(velocityAfterNext(), Math::Pose2D());
  const Math::Pose2D turning = velocityAfterNext();
  EXPECT_NEAR(turning.x, 0.0f, 1e-6f);
  EXPECT_NEAR(turning.theta, 2.0f * (2.0f * 3.1415927f - 6.0f), 1e-5f);
  EXPECT_EQ(velocityAfterNext(), turning);
  const Math::Pose2D sliding = velocityAfterNext();
  EXPECT_NEAR(sliding.x, std::sin(-3.0f), 1e-6f);
  EXPECT_NEAR(sliding.y, std::cos(-3.0f), 1e-6f);
}

TEST_F(LogReplayTest, aStepThatCantBeWrittenThrowsAndDoesNotCount) {
  LogReplay sut(makeRecording(), broker, body);
  memory.insertData("y", 1);
  memory.getDataPtr("y");
  EXPECT_EQ(errorOf([&] { sut.next(); }),
            "QVMemory::insertData: key \"y\" is connected: int expected, float given");
  EXPECT_EQ(sut.getStepsMade(), 0u);
  Recording recording = makeRecording();
  recording.steps[2].values.pop_back();
  EXPECT_EQ(errorOf([&] { LogReplay(recording, broker, body); }),
            "LogReplay: 3 values in each step expected, 2 given");
}

}  // namespace
}  // namespace QV::robot
