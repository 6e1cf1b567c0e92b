#include "sensor/range/sonar_sensor.h"

#include <cmath>
#include <limits>

#include <gmock/gmock.h>

#include "tests/support/fake_robot.h"
#include "tests/support/log_capture.h"
#include "tests/support/throws.h"

namespace QV::sensor {
namespace {

using test::errorOf;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();
const Math::SensorFieldOfView2D kFieldOfView(0.25f, 2.5f, 0.96f, 1);

class SonarSensorTest : public testing::Test {
 protected:
  SonarSensor makeSonar(const std::vector<std::string>& keys, bool subscribeToModule = false) {
    return SonarSensor("Front", "Sonar", kFieldOfView, keys, robot.broker, subscribeToModule);
  }

  /** Offers the module "QVSonar", and its two methods. */
  void addDriver() {
    const auto driver = boost::make_shared<QVModule>("QVSonar");
    for (const char* method : {"subscribe", "unsubscribe"}) {
      driver->bindMethod(method, [](const std::string&) {});
    }
    robot.broker->registerModule(driver);
  }

  /** The reading of `value`. */
  std::vector<Math::MetricalData> read(const QVValue& value) {
    robot.memory.insertData("range", value);
    sut.subscribe("test");
    return sut.getData();
  }

  test::FakeRobot robot;
  test::LogCapture log;
  SonarSensor sut{"Front", "Sonar", kFieldOfView, {"range"}, robot.broker, false};
};

TEST_F(SonarSensorTest, takesExactlyOneKey) {
  EXPECT_EQ(errorOf([&] { makeSonar({}); }), "Wrong memory keys size for Front. Given 0.");
  EXPECT_EQ(errorOf([&] { makeSonar({"a", "b"}); }), "Wrong memory keys size for Front. Given 2.");
}

TEST_F(SonarSensorTest, aReadingIsAnArcInsideTheAperture) {
  const auto records = read(2.0f);
  ASSERT_EQ(records.size(), 1u);
  EXPECT_EQ(records[0].sensorName, "Front");
  EXPECT_EQ(records[0].familyName, "Sonar");
  EXPECT_EQ(records[0].fieldOfView, Math::SensorFieldOfView2D(0.25f, 2.5f, 0.96f, 15));
  EXPECT_EQ(records[0].timestamp, ko::Clock::now());
  ASSERT_EQ(records[0].points.size(), 15u);
  for (int i = 0; i < 15; ++i) {
    const auto& point = records[0].points[static_cast<std::size_t>(i)];
    const float angle = -0.42f + 0.06f * static_cast<float>(i);
    EXPECT_NEAR(point.x, 2.0f * std::cos(angle), 1e-6f);
    EXPECT_NEAR(point.y, 2.0f * std::sin(angle), 1e-6f);
    EXPECT_EQ(point.z, 0.0f);
  }
}

TEST_F(SonarSensorTest, rangesUpToTheLeastAreTooNearToTell) {
  const std::pair<QVValue, float> cases[] = {{0.25f, 0.1f}, {std::nextafter(0.25f, 1.0f), 0.25f},
                                             {0.2f, 0.1f},  {0.0f, 0.1f},
                                             {-3.0f, 0.1f}, {-kInf, 0.1f},
                                             {1, 1.0f},     {true, 1.0f},
                                             {2.5f, 2.5f},  {7.0f, 7.0f},
                                             {1e30f, 1e30f}};
  for (const auto& [value, range] : cases) {
    const auto records = read(value);
    ASSERT_EQ(records.size(), 1u) << value;
    EXPECT_FLOAT_EQ(Math::norm(records[0].points.front()), range) << value;
    EXPECT_FLOAT_EQ(records[0].points[7].x, range) << value;
  }
}

TEST_F(SonarSensorTest, aRangeThatIsNoNumberIsPassedOnAsPointsNowhere) {
  for (const float range : {kNan, kInf}) {
    const auto records = read(range);
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(records[0].points.size(), 15u);
    for (const auto& point : records[0].points) EXPECT_FALSE(std::isfinite(point.x));
  }
}

TEST_F(SonarSensorTest, aKeyThatHoldsNoNumberReadsNothingAndSaysNothing) {
  sut.subscribe("test");
  EXPECT_THAT(sut.getData(), IsEmpty());
  for (const QVValue& value :
       {QVValue("near"), QVValue(), QVValue::array(1.0f), QVValue(QVValue::Bytes{1})}) {
    EXPECT_THAT(read(value), IsEmpty()) << value;
  }
  robot.broker->plan("QVMemory.getData", [] { throw 42; });
  EXPECT_THAT(sut.getData(), IsEmpty());
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(SonarSensorTest, itsPlaceIsThatOfHalfASecondBeforeTurnedAboutTheVerticalOnly) {
  robot.motion->transform = (Math::Transform::fromPosition({0.1f, -0.2f, 0.3f}) *
                             Math::rotationFrom3DRotation(0.1f, 0.0f, 0.7f))
                                .toVector();
  const auto records = read(1.0f);
  const auto expected = Math::Transform::fromPosition({0.1f, -0.2f, 0.3f}) *
                        Math::rotationFrom3DRotation(0.0f, 0.0f, 0.7f);
  for (std::size_t i = 0; i < 12; ++i) {
    EXPECT_NEAR(records.at(0).sensorTransform.values[i], expected.values[i], 1e-6f) << i;
  }
  EXPECT_THAT(robot.broker->callsTo("QVMotion"),
              ElementsAre("_getSensorTransformAtTime[\"Front\", 9500000000]"));
}

TEST(SonarSensor, itsPlaceIsAskedForEvenBeforeTheStart) {
  ko::SimulatedTime time;
  const auto broker = test::brokerWithMemory<test::TracingBroker>();
  broker->registerModule(boost::make_shared<robot::DeviceManager>(broker));
  broker->registerModule(boost::make_shared<test::FakeMotion>());
  QVMemoryProxy(broker).insertData("range", 1.0f);
  SonarSensor sut("Front", "Sonar", kFieldOfView, {"range"}, broker, false);
  sut.subscribe("test");
  EXPECT_EQ(sut.getData().size(), 1u);
  EXPECT_THAT(broker->callsTo("QVMotion"),
              ElementsAre("_getSensorTransformAtTime[\"Front\", -500000000]"));
}

TEST_F(SonarSensorTest, withoutAPlaceNothingIsReadAndTheErrorIsLogged) {
  robot.motion->transform = std::vector<float>(11, 0.0f);
  EXPECT_THAT(read(1.0f), IsEmpty());
  robot.motion->transform = "here";
  EXPECT_THAT(read(1.0f), IsEmpty());
  robot.broker->planFailure("QVMotion._getSensorTransformAtTime", "not covered");
  EXPECT_THAT(read(1.0f), IsEmpty());
  const std::string start = "error Navigation.SonarSensor.xGetData: ";
  EXPECT_THAT(log.lines(), ElementsAre(start + "Transform: 12 floats expected, 11 given",
                                       start + "QVMotion::_getSensorTransformAtTime: result "
                                               "array of float expected, string given",
                                       start + "not covered"));
}

TEST_F(SonarSensorTest, aPlainSonarNeverContactsTheDriver) {
  addDriver();
  sut.subscribe("test");
  sut.unsubscribe("test");
  EXPECT_TRUE(sut.isDiagnosisSucess());
  EXPECT_THAT(robot.broker->callsTo("QVSonar"), IsEmpty());
}

TEST_F(SonarSensorTest, theDriverRunsWhileTheSensorIsStarted) {
  addDriver();
  SonarSensor sonar = makeSonar({"range"}, true);
  EXPECT_THAT(robot.broker->callsTo("QVSonar"), IsEmpty());
  sonar.subscribe("a");
  sonar.subscribe("b");
  sonar.unsubscribe("a");
  EXPECT_TRUE(sonar.isStarted());
  EXPECT_THAT(robot.broker->callsTo("QVSonar"), ElementsAre("subscribe[\"Front\"]"));
  sonar.unsubscribe("b");
  EXPECT_TRUE(sonar.isDiagnosisSucess());
  EXPECT_THAT(robot.broker->callsTo("QVSonar"),
              ElementsAre("subscribe[\"Front\"]", "unsubscribe[\"Front\"]"));
}

TEST_F(SonarSensorTest, aDriverThatCannotBeReachedIsAFailedDiagnosis) {
  const std::string start = "warning Navigation.SonarSensor.";
  const std::string text = ": Unable to reach QVSonar module: \n";
  SonarSensor sonar = makeSonar({"range"}, true);
  sonar.subscribe("test");
  EXPECT_FALSE(sonar.isStarted());
  EXPECT_FALSE(sonar.isDiagnosisSucess());
  addDriver();
  sonar.setDiagnosis(true);
  EXPECT_TRUE(sonar.isStarted());
  robot.broker->planFailure("QVSonar.unsubscribe", "busy");
  sonar.unsubscribe("test");
  EXPECT_FALSE(sonar.isDiagnosisSucess());
  EXPECT_THAT(log.lines(), ElementsAre(start + "xSubscribeToHardware" + text +
                                           "QVProxy::QVProxy: no module \"QVSonar\"",
                                       start + "xUnsubscribeFromHardware" + text + "busy"));
}

}  // namespace
}  // namespace QV::sensor
