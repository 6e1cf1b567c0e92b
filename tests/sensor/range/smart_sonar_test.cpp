#include "sensor/range/internal/smart_sonar.h"

#include "platform/model/model_utils.h"
#include "robot/services/internal/motion_service.h"
#include "robot/services/internal/robot_model_service.h"
#include "robot/services/internal/sonar_driver.h"
#include "tests/support/fake_robot.h"

namespace QV::sensor {
namespace {

// A forearm with a ball at its end: left of the sonar's axis at rest, on it when turned back.
const std::string kOneArm = R"(<robot name="r"><link name="torso"/><link name="arm">
  <collision name="ball"><origin xyz="0.5 0 0"/><geometry><sphere radius="0.05"/></geometry>
  </collision></link>
  <joint name="LElbowRoll" type="continuous"><parent link="torso"/><child link="arm"/>
    <origin xyz="0.8 0.5 0"/><axis xyz="0 0 1"/></joint>
  <sensor name="Front" type="9"><memory_key>range</memory_key></sensor></robot>)";

/** A robot of kind 0 whose body and driver are those of a description. */
struct SmartSonarTest : test::FakeRobotTest {
  void describe(const std::string& xml) {
    const Model::Robot model = Model::ModelUtils::robotFromXml(xml);
    body = boost::make_shared<robot::MotionService>(model);
    broker->unregisterModule("QVMotion");
    broker->registerModule(body);
    broker->registerModule(boost::make_shared<robot::RobotModelService>(xml));
    broker->registerModule(boost::make_shared<robot::SonarDriver>(broker, model));
    memory.insertData("range", 1.0f);
  }

  boost::shared_ptr<SmartSonar> makeSonar(float angularRange = 0.5f) {
    const Math::SensorFieldOfView2D fieldOfView(0.25f, 2.5f, angularRange, 1);
    const std::vector<std::string> keys{"range"};
    return boost::make_shared<SmartSonar>("Front", "Sonar", fieldOfView, keys, broker, true);
  }

  static bool isBlocked(SmartSonar& sonar) { return readOf(sonar).empty(); }

  boost::shared_ptr<robot::MotionService> body;
};

TEST_F(SmartSonarTest, halfItsAngularRangeOpensTheCone) {
  describe(kOneArm);
  // The ball at rest is seen 21 degrees off the axis, its near edge less than 2 nearer.
  const std::pair<float, bool> cases[] = {{0.64f, false}, {0.7f, true}, {1.0f, true}};
  for (const auto& [angularRange, blocked] : cases) {
    EXPECT_EQ(isBlocked(*makeSonar(angularRange)), blocked) << angularRange;
  }
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(SmartSonarTest, withoutObstructionItBehavesAsASonar) {
  describe(kOneArm);
  const auto sut = makeSonar();
  SonarSensor plain("Front", "Sonar", Math::SensorFieldOfView2D(0.25f, 2.5f, 0.5f, 1), {"range"},
                    broker, false);
  const auto expected = readOf(plain);
  ASSERT_EQ(expected.size(), 1u);
  EXPECT_EQ(readOf(*sut), expected);
  sut->unsubscribe("test");
  EXPECT_THAT(broker->callsTo("QVSonar"),
              ElementsAre("subscribe[\"Front\"]", "unsubscribe[\"Front\"]"));
}

TEST_F(SmartSonarTest, exceptionsOutsideTheReadingReachTheCaller) {
  describe(kOneArm);
  const auto sut = makeSonar();
  broker->planFailure("QVMotion.getTransform", "encoder broken");
  EXPECT_EQ(errorOf([&] { readOf(*sut); }), "encoder broken");
  EXPECT_EQ(errorOf([&] { makeSonar(); }), "encoder broken");
  broker->plan("QVMotion.getTransform", {});
  broker->unregisterModule("QVRobotModel");
  EXPECT_EQ(errorOf([&] { makeSonar(); }), "QVProxy::QVProxy: no module \"QVRobotModel\"");
}

}  // namespace
}  // namespace QV::sensor
