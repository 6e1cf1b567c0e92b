#include "sensor/range/smart_sonar.h"

#include <array>
#include <numbers>

#include <gmock/gmock.h>

#include "platform/model/model_utils.h"
#include "robot/services/motion_service.h"
#include "robot/services/robot_model_service.h"
#include "robot/services/sonar_driver.h"
#include "tests/support/fake_robot.h"
#include "tests/support/log_capture.h"
#include "tests/support/real_data.h"
#include "tests/support/throws.h"

namespace QV::sensor {
namespace {

using test::errorOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr double kQuarterTurn = std::numbers::pi / 2;

// A forearm with a ball at its end: to the left of the sonar's axis at rest, on it when turned
// back.
const std::string kOneArm = R"(<robot name="r"><link name="torso"/><link name="arm">
  <collision name="ball"><origin xyz="0.5 0 0"/><geometry><sphere radius="0.05"/></geometry>
  </collision></link>
  <joint name="LElbowRoll" type="continuous"><parent link="torso"/><child link="arm"/>
    <origin xyz="0.8 0.5 0"/><axis xyz="0 0 1"/></joint>
  <sensor name="Front" type="9"><memory_key>range</memory_key></sensor></robot>)";

/** The embedded services of a description of kind 0. */
struct SmartRobot {
  explicit SmartRobot(const std::string& xml)
      : motion(boost::make_shared<robot::MotionService>(Model::ModelUtils::robotFromXml(xml))) {
    for (const boost::shared_ptr<QVModule>& module : std::vector<boost::shared_ptr<QVModule>>{
             boost::make_shared<robot::DeviceManager>(broker), motion,
             boost::make_shared<robot::RobotModelService>(xml),
             boost::make_shared<robot::SonarDriver>(broker,
                                                    Model::ModelUtils::robotFromXml(xml))}) {
      broker->registerModule(module);
    }
    QVMemoryProxy(broker).insertData("range", 1.0f);
  }

  boost::shared_ptr<SmartSonar> makeSonar(float angularRange,
                                          const std::vector<std::string>& keys = {"range"}) const {
    return boost::make_shared<SmartSonar>("Front", "Sonar",
                                          Math::SensorFieldOfView2D(0.25f, 2.5f, angularRange, 1),
                                          keys, broker, true);
  }

  ko::SimulatedTime time;
  boost::shared_ptr<test::TracingBroker> broker = test::brokerWithMemory<test::TracingBroker>();
  boost::shared_ptr<robot::MotionService> motion;
};

/** Whether a sonar, started for this, reads nothing. */
bool isBlocked(SmartSonar& sonar) {
  sonar.subscribe("test");
  return sonar.getData().empty();
}

class SmartSonarTest : public testing::Test {
 protected:
  SmartRobot robot{kOneArm};
  test::LogCapture log;
};

TEST_F(SmartSonarTest, anArmInItsConeTakesTheReadingAwayWithoutAWord) {
  const auto sut = robot.makeSonar(0.5f);
  EXPECT_FALSE(isBlocked(*sut));
  robot.motion->setJointPositions({{"LElbowRoll", -kQuarterTurn}});
  EXPECT_TRUE(isBlocked(*sut));
  robot.motion->setJointPositions({{"LElbowRoll", kQuarterTurn}});
  EXPECT_FALSE(isBlocked(*sut));
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(SmartSonarTest, aBlockedSonarIsNotRead) {
  const auto sut = robot.makeSonar(0.5f);
  robot.motion->setJointPositions({{"LElbowRoll", -kQuarterTurn}});
  EXPECT_TRUE(isBlocked(*sut));
  EXPECT_THAT(robot.broker->callsTo("QVMemory"), Not(Contains(HasSubstr("getData"))));
  EXPECT_TRUE(sut->isStarted());
}

TEST_F(SmartSonarTest, withoutObstructionItIsASonar) {
  const auto sut = robot.makeSonar(0.5f);
  sut->subscribe("test");
  SonarSensor plain("Front", "Sonar", Math::SensorFieldOfView2D(0.25f, 2.5f, 0.5f, 1), {"range"},
                    robot.broker, false);
  plain.subscribe("test");
  ASSERT_EQ(plain.getData().size(), 1u);
  EXPECT_EQ(sut->getData(), plain.getData());
  sut->unsubscribe("test");
  EXPECT_THAT(robot.broker->callsTo("QVSonar"),
              ElementsAre("subscribe[\"Front\"]", "unsubscribe[\"Front\"]"));
}

TEST_F(SmartSonarTest, halfItsAngularRangeOpensTheCone) {
  // The ball at rest is seen 21 degrees off the axis.
  const std::pair<float, bool> cases[] = {
      {0.5f, false}, {0.64f, false}, {0.7f, true}, {1.0f, true}};
  for (const auto& [angularRange, blocked] : cases) {
    EXPECT_EQ(isBlocked(*robot.makeSonar(angularRange)), blocked) << angularRange;
  }
}

TEST_F(SmartSonarTest, itsPlaceOnTheBodyIsAskedOnce) {
  const auto sut = robot.makeSonar(0.5f);
  const std::string own = "getTransform[\"Front\", 0, true]";
  EXPECT_THAT(robot.broker->callsTo("QVMotion"), ElementsAre(own));
  isBlocked(*sut);
  isBlocked(*sut);
  EXPECT_THAT(robot.broker->callsTo("QVMotion"), Contains(own).Times(1));
  EXPECT_THAT(robot.broker->callsTo("QVMotion"),
              Contains("getTransform[\"LElbowRoll\", 0, true]").Times(2));
}

TEST_F(SmartSonarTest, whatFailsAtConstructionComesOut) {
  EXPECT_EQ(errorOf([&] {
              robot.makeSonar(0.5f, {"a", "b"});
            }),
            "Wrong memory keys size for Front. Given 2.");
  robot.broker->planFailure("QVMotion.getTransform", "no such frame");
  EXPECT_EQ(errorOf([&] { robot.makeSonar(0.5f); }), "no such frame");
  robot.broker->forgetPlan("QVMotion.getTransform");
  robot.broker->unregisterModule("QVRobotModel");
  EXPECT_EQ(errorOf([&] { robot.makeSonar(0.5f); }),
            "QVProxy::QVProxy: no module \"QVRobotModel\"");
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(SmartSonarTest, anArmWhosePlaceIsNotToldReachesTheReader) {
  const auto sut = robot.makeSonar(0.5f);
  sut->subscribe("test");
  robot.broker->planFailure("QVMotion.getTransform", "encoder broken");
  EXPECT_EQ(errorOf([&] { sut->getData(); }), "encoder broken");
}

std::string replaced(std::string text, const std::string& from, const std::string& to) {
  for (auto at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
  return text;
}

/** The description of a real robot of two arms, with a sonar at its belly; nothing without data. */
std::optional<std::string> twoArms() {
  const auto xml = test::readRealData("urdf/reachy.urdf");
  if (!xml) return std::nullopt;
  return replaced(*xml, "</robot>",
                  R"(<sensor name="Front" type="9"><parent link="torso"/>
                       <origin xyz="0.06 0 -0.25"/><memory_key>range</memory_key></sensor></robot>)");
}

std::string withNamedForearms(const std::string& xml) {
  return replaced(replaced(xml, "\"l_forearm_yaw\"", "\"LElbowRoll\""), "\"r_forearm_yaw\"",
                  "\"RElbowRoll\"");
}

/** The forearm of a side, "l" or "r", is held before the belly. */
std::map<std::string, double> heldBeforeTheBelly(const std::string& side) {
  return {{side + "_elbow_pitch", -kQuarterTurn}, {side + "_arm_yaw", side == "l" ? -0.8 : 0.8}};
}

TEST(SmartSonarOnARealRobot, seesAnArmSwungBeforeItAndNotOneAtRest) {
  const auto xml = twoArms();
  if (!xml) GTEST_SKIP() << "no reachy.urdf in QV_DATA";
  SmartRobot robot(withNamedForearms(*xml));
  const auto sut = robot.makeSonar(0.96f);
  EXPECT_FALSE(isBlocked(*sut));
  for (const std::string side : {"l", "r"}) {
    robot.motion->setJointPositions(heldBeforeTheBelly(side));
    EXPECT_TRUE(isBlocked(*sut)) << side;
    robot.motion->setJointPositions({{side + "_arm_yaw", 0.0}});
    EXPECT_FALSE(isBlocked(*sut)) << side;
    robot.motion->setJointPositions({{side + "_elbow_pitch", 0.0}});
    EXPECT_FALSE(isBlocked(*sut)) << side;
  }
}

TEST(SmartSonarOnARealRobot, withoutTheTwoNamesNothingIsEverInTheWay) {
  const auto xml = twoArms();
  if (!xml) GTEST_SKIP() << "no reachy.urdf in QV_DATA";
  SmartRobot robot(*xml);
  const auto sut = robot.makeSonar(0.96f);
  for (const std::string side : {"l", "r"}) {
    robot.motion->setJointPositions(heldBeforeTheBelly(side));
    EXPECT_FALSE(isBlocked(*sut)) << side;
  }
}

}  // namespace
}  // namespace QV::sensor
