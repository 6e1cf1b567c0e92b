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

TEST_F(LaserModeActuatorTest, withoutADelayTheKeyShowsACommandAtOnce) {
  sut->setDelay(ko::Duration::zero());
  command(3);
  EXPECT_EQ(memory.getData("mode"), QVValue(3));
}

/** The modes of two lasers, "A" and "B", that others drive. */
struct OthersLaserModesTest : test::FakeRobotTest {
  LaserModes make(const std::string& actuatorOfB, const std::string& keyOfB) {
    Model::Robot model;
    const auto add = [&](const std::string& name, const std::string& actuator,
                         const std::string& key) {
      model.sensorConfigs[name].properties = {{"setOperationMode", actuator},
                                              {"getOperationMode", key}};
    };
    add("A", "actuator", "mode");
    add("B", actuatorOfB, keyOfB);
    return makeLaserModes(broker, devices, model);
  }
};

TEST_F(OthersLaserModesTest, aModeHasOneActuatorAndAnActuatorOneMode) {
  EXPECT_THAT(make("actuator", "mode"), SizeIs(1));
  EXPECT_THAT(make("other", "other mode"), SizeIs(2));
  EXPECT_THAT(errorOf([&] { make("actuator", "other mode"); }),
              HasSubstr(R"(laser "B": getOperationMode "mode" expected)"));
  EXPECT_THAT(errorOf([&] { make("other", "mode"); }),
              HasSubstr(R"(laser "B": setOperationMode "actuator" expected)"));
}

}  // namespace
}  // namespace QV::robot
