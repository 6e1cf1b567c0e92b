#include "robot/services/laser_mode_actuator.h"

#include <gmock/gmock.h>

#include "platform/middleware/dcm_proxy.h"
#include "platform/middleware/qv_memory_proxy.h"
#include "tests/support/fake_robot.h"

namespace QV::robot {
namespace {

using boost::chrono::milliseconds;

class LaserModeActuatorTest : public testing::Test {
 protected:
  void command(const QVValue& mode) {
    const QVValue timed = QVValue::array(mode, dcm.getTime(0));
    dcm.set(QVValue::array("actuator", "ClearAll", QVValue::array(timed)));
  }
  QVValue mode() const { return robot.memory.getData("mode"); }

  test::FakeRobot robot;
  DCMProxy dcm{robot.broker};
  std::optional<LaserModeActuator> sut{std::in_place, robot.broker, robot.devices,
                                       "actuator",    "mode",       milliseconds(50)};
};

TEST_F(LaserModeActuatorTest, aCommandShowsAfterTheDelay) {
  EXPECT_EQ(mode(), QVValue(0));
  command(5.0f);
  robot.time.advance(milliseconds(49));
  EXPECT_EQ(mode(), QVValue(0));
  robot.time.advance(milliseconds(1));
  EXPECT_EQ(mode(), QVValue(5));
}

TEST_F(LaserModeActuatorTest, aCommandTakesThePlaceOfOneThatDoesNotShowYet) {
  command(5.0f);
  robot.time.advance(milliseconds(30));
  sut->setDelay(milliseconds(10));
  command(7.0f);
  robot.time.advance(milliseconds(10));
  EXPECT_EQ(mode(), QVValue(7));
  robot.time.advance(milliseconds(100));
  EXPECT_EQ(mode(), QVValue(7));
}

TEST_F(LaserModeActuatorTest, withoutADelayItShowsBeforeTheCommandReturns) {
  command(5.0f);
  sut->setDelay(ko::Duration(0));
  command(true);
  EXPECT_EQ(mode(), QVValue(1));
  robot.time.advance(milliseconds(100));
  EXPECT_EQ(mode(), QVValue(1));
}

TEST_F(LaserModeActuatorTest, itMayNeverShow) {
  command(5.0f);
  sut->setDelay(std::nullopt);
  robot.time.advance(boost::chrono::hours(1));
  EXPECT_EQ(mode(), QVValue(0));
  command(7.0f);
  sut->setDelay(milliseconds(1));
  robot.time.advance(boost::chrono::hours(1));
  EXPECT_EQ(mode(), QVValue(0));
}

TEST_F(LaserModeActuatorTest, itsEndGivesTheActuatorBack) {
  command(5.0f);
  sut.reset();
  robot.time.advance(milliseconds(100));
  EXPECT_EQ(mode(), QVValue(0));
  command(5.0f);
  EXPECT_EQ(robot.memory.getData("actuator"), QVValue(5.0f));
}

}  // namespace
}  // namespace QV::robot
