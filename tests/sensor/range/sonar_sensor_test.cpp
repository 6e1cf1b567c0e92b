#include "sensor/range/internal/sonar_sensor.h"

#include <cmath>

#include "tests/support/fake_robot.h"

namespace QV::sensor {
namespace {

using testing::NanSensitiveFloatEq;

const std::string kWarning = "warning Navigation.SonarSensor.";
const std::string kUnreachable = ": Unable to reach QVSonar module: \n";

struct SonarSensorTest : test::FakeRobotTest {
  SonarSensor makeSonar(const std::vector<std::string>& keys, bool subscribeToModule) {
    return SonarSensor("Front", "Sonar", Math::SensorFieldOfView2D(0.25f, 2.5f, 0.96f, 1), keys,
                       broker, subscribeToModule);
  }

  void addDriver() {
    const auto driver = boost::make_shared<QVModule>("QVSonar");
    for (const char* method : {"subscribe", "unsubscribe"}) {
      driver->bindMethod(method, [](const std::string&) {});
    }
    broker->registerModule(driver);
  }

  /** The reading of `value`. */
  std::vector<Math::MetricalData> read(const QVValue& value) {
    memory.insertData("range", value);
    return readOf(sut);
  }

  SonarSensor sut = makeSonar({"range"}, false);
};

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

TEST_F(SonarSensorTest, rangesUpToTheMinimumBecomeTooNearAndOthersStay) {
  const std::pair<QVValue, float> cases[] = {{0.25f, 0.1f}, {std::nextafter(0.25f, 1.0f), 0.25f},
                                             {0.0f, 0.1f},  {-kInf, 0.1f},
                                             {1, 1.0f},     {true, 1.0f},
                                             {7.0f, 7.0f},  {1e30f, 1e30f},
                                             {kInf, kInf},  {kNan, kNan}};
  for (const auto& [value, range] : cases) {
    const auto records = read(value);
    ASSERT_EQ(records.size(), 1u) << value;
    ASSERT_EQ(records[0].points.size(), 15u) << value;
    EXPECT_THAT(records[0].points[7].x, NanSensitiveFloatEq(range)) << value;
  }
}

TEST_F(SonarSensorTest, aKeyWithoutANumberGivesNoRecordAndNoLogLine) {
  EXPECT_THAT(readOf(sut), IsEmpty());
  for (const QVValue& value : {QVValue("near"), QVValue(), QVValue::array(1.0f)}) {
    EXPECT_THAT(read(value), IsEmpty()) << value;
  }
  broker->plan("QVMemory.getData", [] { throw 42; });
  EXPECT_THAT(readOf(sut), IsEmpty());
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(SonarSensorTest, theTransformIsHalfASecondOldAndHasYawOnly) {
  motion->transform = test::tiltedFrame().toVector();
  const auto expected = Math::Transform::fromPosition({0.1f, -0.2f, 0.3f}) *
                        Math::rotationFrom3DRotation(0.0f, 0.0f, 0.7f);
  EXPECT_THAT(read(1.0f).at(0).sensorTransform, test::IsNearFrame(expected));
  EXPECT_THAT(broker->callsTo("QVMotion"),
              ElementsAre("_getSensorTransformAtTime[\"Front\", -400000000]"));
}

TEST_F(SonarSensorTest, looksWhereItsAxisPointsHoweverItIsRolled) {
  constexpr float kUpsideDown = 3.1415927f;
  const std::pair<float, float> mountings[] = {{0.0f, 0.0f},         {0.0f, 0.4f}, {1.5f, 0.0f},
                                               {kUpsideDown, 0.0f},  {3.0f, 0.0f}, {-3.1f, 0.0f},
                                               {kUpsideDown, -0.4f}, {-1.6f, 0.0f}};
  for (const auto& [roll, pitch] : mountings) {
    for (const float heading : {0.0f, 0.7f, 3.0f, -1.9f}) {
      motion->transform = Math::rotationFrom3DRotation(roll, pitch, heading).toVector();
      EXPECT_THAT(read(1.0f).at(0).sensorTransform,
                  test::IsNearFrame(Math::rotationFrom3DRotation(0.0f, 0.0f, heading)))
          << roll << ", " << pitch << ", " << heading;
    }
  }
}

TEST_F(SonarSensorTest, withoutATransformThereIsNoRecordAndAnErrorIsLogged) {
  motion->transform = std::vector<float>(11, 0.0f);
  EXPECT_THAT(read(1.0f), IsEmpty());
  broker->planFailure("QVMotion._getSensorTransformAtTime", "not covered");
  EXPECT_THAT(read(1.0f), IsEmpty());
  const std::string start = "error Navigation.SonarSensor.xGetData: ";
  EXPECT_THAT(log.lines(), ElementsAre(start + "Transform: 12 floats expected, 11 given",
                                       start + "not covered"));
}

TEST_F(SonarSensorTest, theDriverRunsWhileASensorThatUsesItIsStarted) {
  SonarSensor asking = makeSonar({"range"}, true);
  asking.subscribe("a");
  EXPECT_FALSE(asking.isStarted());
  EXPECT_FALSE(asking.isDiagnosisSucess());
  addDriver();
  asking.setDiagnosis(true);
  EXPECT_TRUE(asking.isStarted());
  readOf(sut);
  sut.unsubscribe("test");
  EXPECT_THAT(broker->callsTo("QVSonar"), ElementsAre("subscribe[\"Front\"]"));
  broker->planFailure("QVSonar.unsubscribe", "busy");
  asking.unsubscribe("a");
  EXPECT_FALSE(asking.isStarted());
  EXPECT_FALSE(asking.isDiagnosisSucess());
  EXPECT_EQ(broker->callsTo("QVSonar").at(1), "unsubscribe[\"Front\"]");
  EXPECT_THAT(log.lines(),
              ElementsAre(kWarning + "xSubscribeToHardware" + kUnreachable +
                              "QVProxy::QVProxy: no module \"QVSonar\"",
                          kWarning + "xUnsubscribeFromHardware" + kUnreachable + "busy"));
}

}  // namespace
}  // namespace QV::sensor
