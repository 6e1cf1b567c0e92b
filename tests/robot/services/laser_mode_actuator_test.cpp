#include "robot/services/internal/laser_mode_actuator.h"

#include <optional>

#include "platform/middleware/dcm_proxy.h"
#include "platform/middleware/qv_error.h"
#include "tests/support/fake_robot.h"

namespace QV::robot {
namespace {

struct LaserModeActuatorTest : test::FakeRobotTest {
  void command(const QVValue& mode) {
    const DCMProxy dcm(broker);
    dcm.set(QVValue::array("actuator", "ClearAll",
                           QVValue::array(QVValue::array(mode, dcm.getTime(0)))));
  }
  /** Returns what the key shows after some milliseconds. */
  QVValue modeIn(int ms) {
    time.advance(milliseconds(ms));
    return memory.getData("mode");
  }

  std::optional<LaserModeActuator> sut{std::in_place, broker, devices,
                                       "actuator",    "mode", milliseconds(50)};
};

TEST_F(LaserModeActuatorTest, theDestructorReleasesTheActuator) {
  command(5.0f);
  EXPECT_THROW(memory.getData("actuator"), QVError);
  sut.reset();
  EXPECT_EQ(modeIn(100), QVValue(0));
  command(5.0f);
  EXPECT_EQ(memory.getData("actuator"), QVValue(5.0f));
}

}  // namespace
}  // namespace QV::robot
