#include "sensor/range/laser_sensor.h"

#include <cmath>
#include <limits>

#include <gmock/gmock.h>

#include "robot/services/laser_mode_actuator.h"
#include "tests/support/fake_robot.h"
#include "tests/support/log_capture.h"

namespace QV::sensor {
namespace {

using boost::chrono::milliseconds;
using Math::Position3D;
using test::at;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();
const Math::SensorFieldOfView2D kFieldOfView(0.5f, 5.0f, 1.0f, 1);
const std::string kReadError = "error Navigation.LaserSensor.xGetData: ";
const std::string kSetKey = " Navigation.LaserSensor.xSetKey: ";

class LaserSensorTest : public testing::Test {
 protected:
  LaserSensorTest() {
    robot.memory.insertData("mode", 0);
    robot.memory.insertData("stamp", 9'000);
  }

  boost::shared_ptr<LaserSensor> makeLaser(const std::vector<std::string>& keys, int mask = 2,
                                           const std::string& name = "Front") {
    return boost::make_shared<LaserSensor>(name, "Laser", kFieldOfView, robot.broker, keys, mask,
                                           "modeActuator", "mode", "stamp");
  }

  /** The hardware that confirms before a command's `set` returns. */
  void confirmAtOnce() {
    robot.devices->setActuatorHandler("modeActuator",
                                      [this](const std::string&, const QVValue& mode) {
                                        commanded.push_back(mode);
                                        robot.memory.insertData("mode", mode);
                                      });
  }

  /** Writes the coordinates into the keys 0, 1, ... and reads them through a laser. */
  std::vector<Math::MetricalData> read(const std::vector<QVValue>& coordinates) {
    confirmAtOnce();
    std::vector<std::string> keys;
    for (const QVValue& value : coordinates) {
      keys.push_back(std::to_string(keys.size()));
      robot.memory.insertData(keys.back(), value);
    }
    const auto sut = makeLaser(keys);
    sut->subscribe("test");
    return sut->getData();
  }

  ko::Duration elapsedSince(ko::Clock::time_point start) const { return ko::Clock::now() - start; }

  test::FakeRobot robot;
  test::LogCapture log;
  std::vector<QVValue> commanded;
};

TEST_F(LaserSensorTest, aReadingIsThePairsOfKeysNearerThanTheLimit) {
  struct Case {
    std::vector<QVValue> coordinates;
    std::vector<Position3D> points;
  };
  const Case cases[] = {
      {{1.0f, 2.0f, 0.1f, -0.1f}, {{1.0f, 2.0f, 0.0f}, {0.1f, -0.1f, 0.0f}}},
      {{3.0f, 4.0f}, {}},
      {{3.0f, 3.9999f}, {{3.0f, 3.9999f, 0.0f}}},
      {{-3.0f, 4.0f, 1, true}, {{1.0f, 1.0f, 0.0f}}},
      {{1.0f, 2.0f, 3.0f}, {{1.0f, 2.0f, 0.0f}}},
      {{1.0f}, {}},
      {{}, {}},
      {{kNan, 1.0f, 1.0f, kNan, kInf, 1.0f, 1.0f, -kInf, 1e30f, 1e30f}, {}},
  };
  for (const Case& c : cases) {
    const auto records = read(c.coordinates);
    ASSERT_EQ(records.size(), 1u);
    EXPECT_THAT(records[0].points, ElementsAreArray(c.points)) << QVValue(c.coordinates);
    EXPECT_EQ(records[0].fieldOfView.rayCount, static_cast<int>(c.coordinates.size() / 2));
  }
}

TEST_F(LaserSensorTest, aRecordTellsWhoMeasuredAndLiesInTheGroundPlane) {
  robot.motion->transform = (Math::Transform::fromPosition({0.1f, -0.2f, 0.3f}) *
                             Math::rotationFrom3DRotation(0.0f, 0.2f, 0.7f))
                                .toVector();
  const auto records = read({1.0f, 0.0f});
  ASSERT_EQ(records.size(), 1u);
  EXPECT_EQ(records[0].sensorName, "Front");
  EXPECT_EQ(records[0].familyName, "Laser");
  EXPECT_EQ(records[0].fieldOfView, Math::SensorFieldOfView2D(0.5f, 5.0f, 1.0f, 1));
  const auto expected = Math::transformFromPose2D({0.1f, -0.2f, 0.7f});
  for (std::size_t i = 0; i < 12; ++i) {
    EXPECT_NEAR(records[0].sensorTransform.values[i], expected.values[i], 1e-6f) << i;
  }
}

TEST_F(LaserSensorTest, aScanIsDatedFiftyMillisecondsBeforeItsStamp) {
  const std::int64_t wrap = std::int64_t{1} << 32;
  struct Case {
    QVValue stamp;
    std::int64_t milliseconds;
  };
  // Half an hour before the count wraps.
  robot.time.advanceTo(ko::Clock::time_point(milliseconds(wrap - 1'800'000)));
  const Case cases[] = {
      {-1'800'192, wrap - 1'800'192},
      {1024.9f, wrap + 1024},
      {-1024.9f, wrap - 1024},
      {false, wrap},
      {kNan, wrap},
      {1e30f, (wrap >> 1) - 1},
      {-kInf, wrap >> 1},
      {2'147'483'647, (wrap >> 1) - 1},
  };
  for (const Case& c : cases) {
    robot.memory.insertData("stamp", c.stamp);
    const auto records = read({1.0f, 0.0f});
    ASSERT_EQ(records.size(), 1u) << c.stamp;
    EXPECT_EQ(records[0].timestamp, ko::Clock::time_point(milliseconds(c.milliseconds - 50)))
        << c.stamp;
  }
  EXPECT_EQ(robot.broker->callsTo("QVMotion").back(),
            "_getSensorTransformAtTime[\"Front\", 2147483597000000]");
}

TEST_F(LaserSensorTest, whatCannotBeReadGivesNothing) {
  robot.memory.insertData("stamp", "noon");
  EXPECT_THAT(read({1.0f, 0.0f}), IsEmpty());
  robot.memory.insertData("stamp", 1);
  robot.motion->transform = std::vector<float>(11, 0.0f);
  EXPECT_THAT(read({1.0f, 0.0f}), IsEmpty());
  robot.motion->transform = Math::Transform().toVector();
  EXPECT_THAT(read({1.0f, "left"}), IsEmpty());
  std::vector<std::string> errors = log.lines();
  std::erase_if(errors, [](const std::string& line) { return line.starts_with("verbose"); });
  EXPECT_THAT(errors, ElementsAre(kReadError + "unable to retrieve data: stamp\n" +
                                      "QVValue::toFloat: float expected, string given",
                                  kReadError + "Unable to get transform for Front: \n" +
                                      "Transform: 12 floats expected, 11 given"));
}

TEST_F(LaserSensorTest, aForeignExceptionFromACoordinateGivesNothing) {
  confirmAtOnce();
  const auto sut = makeLaser({"x", "y"});
  sut->subscribe("test");
  int reads = 0;
  robot.broker->plan("QVMemory.getData", [&] {
    if (++reads == 2) throw 42;
  });
  EXPECT_THAT(sut->getData(), IsEmpty());
  EXPECT_EQ(reads, 2);
}

TEST_F(LaserSensorTest, switchingSetsOrClearsTheLasersBitsOfTheMode) {
  struct Case {
    int mask;
    QVValue current;
    float on;
    float off;
  };
  const Case cases[] = {
      {2, 5, 7.0f, 5.0f},      {4, 12, 12.0f, 0.0f},  {1, 0, 1.0f, 0.0f},
      {0x102, 8, 10.0f, 0.0f}, {-1, 0, 255.0f, 0.0f}, {1, 6.9f, 7.0f, 6.0f},
      {1, 258, 3.0f, 2.0f},    {1, kNan, 1.0f, 0.0f}, {1, 1e30f, 255.0f, 6.0f},
  };
  confirmAtOnce();
  for (const Case& c : cases) {
    commanded.clear();
    robot.memory.insertData("mode", c.current);
    const auto sut = makeLaser({"x", "y"}, c.mask);
    const auto start = ko::Clock::now();
    sut->subscribe("test");
    EXPECT_TRUE(sut->isStarted());
    sut->unsubscribe("test");
    EXPECT_TRUE(sut->isDiagnosisSucess());
    EXPECT_THAT(commanded, ElementsAre(QVValue(c.on), QVValue(c.off))) << c.mask << c.current;
    EXPECT_EQ(elapsedSince(start), ko::Duration(0));
  }
}

TEST_F(LaserSensorTest, aCommandReplacesThoseThatArePending) {
  confirmAtOnce();
  makeLaser({"x", "y"})->subscribe("test");
  EXPECT_THAT(robot.broker->callsTo("DCM"),
              ElementsAre("getTime[0]", "set[[\"modeActuator\", \"ClearAll\", [[2.0, 10000]]]]"));
}

TEST_F(LaserSensorTest, theHardwareHasUntilTheLastPollButOneToConfirm) {
  struct Case {
    int delayMs;
    int elapsedMs;
    bool confirmed;
  };
  // Poll n looks (n - 1) * 20 ms after the command and then sleeps for 20 ms.
  const Case cases[] = {{1, 40, true},      {20, 40, true},     {21, 60, true},
                        {950, 980, true},   {970, 1000, false}, {990, 1000, false},
                        {5000, 1000, false}};
  for (const Case& c : cases) {
    const robot::LaserModeActuator hardware(robot.broker, robot.devices, "modeActuator", "mode",
                                            milliseconds(c.delayMs));
    const auto sut = makeLaser({"x", "y"});
    const auto start = ko::Clock::now();
    sut->subscribe("test");
    EXPECT_EQ(sut->isStarted(), c.confirmed) << c.delayMs;
    EXPECT_EQ(sut->isDiagnosisSucess(), c.confirmed) << c.delayMs;
    EXPECT_EQ(elapsedSince(start), milliseconds(c.elapsedMs)) << c.delayMs;
  }
}

TEST_F(LaserSensorTest, lasersThatShareAModeStartAndStopApart) {
  const robot::LaserModeActuator hardware(robot.broker, robot.devices, "modeActuator", "mode",
                                          milliseconds(50));
  const auto front = makeLaser({"x", "y"}, 1);
  const auto left = makeLaser({"x", "y"}, 2, "Left");
  const auto mode = [this] { return robot.memory.getData("mode").toInt(); };
  front->subscribe("test");
  EXPECT_EQ(mode(), 1);
  left->subscribe("test");
  EXPECT_EQ(mode(), 3);
  front->unsubscribe("test");
  EXPECT_EQ(mode(), 2);
  EXPECT_TRUE(left->isStarted());
}

TEST_F(LaserSensorTest, theHandshakeIsLoggedAndEndsInATimeout) {
  robot.devices->setActuatorHandler("modeActuator", [](const std::string&, const QVValue&) {});
  robot.memory.insertData("mode", 7);
  const auto sut = makeLaser({"x", "y"});
  sut->subscribe("test");
  EXPECT_TRUE(sut->isStarted());
  sut->unsubscribe("test");
  EXPECT_FALSE(sut->isStarted());
  EXPECT_FALSE(sut->isDiagnosisSucess());
  std::vector<std::string> expected{"verbose" + kSetKey + "Getting 7 Front state.",
                                    "verbose" + kSetKey + "Setting 7 for activation.",
                                    "verbose" + kSetKey + "Getting 7 Front state.",
                                    "verbose" + kSetKey + "Setting 5 for desactivation"};
  expected.resize(54, "verbose" + kSetKey + "Waiting update 7 Front state.");
  expected.push_back("error" + kSetKey + "Timeout while setting operation Mode for Front");
  EXPECT_THAT(log.lines(), ElementsAreArray(expected));
}

TEST_F(LaserSensorTest, aModeThatIsNoNumberIsAFailureBeforeAnythingIsSent) {
  const auto sut = makeLaser({"x", "y"});
  robot.memory.insertData("mode", "on");
  sut->subscribe("test");
  EXPECT_FALSE(sut->isDiagnosisSucess());
  robot.broker->plan("QVMemory.getData", [] { throw 42; });
  sut->setDiagnosis(true);
  EXPECT_FALSE(sut->isDiagnosisSucess());
  const std::string line = "error" + kSetKey + "Unable to get operation mode for Front";
  EXPECT_THAT(log.lines(), ElementsAre(line, line));
  EXPECT_THAT(robot.broker->callsTo("DCM"), IsEmpty());
}

TEST_F(LaserSensorTest, aModeThatBreaksWhileItIsAwaitedEndsTheWait) {
  const auto sut = makeLaser({"x", "y"});
  for (const int broken : {2, 3, 7}) {
    int reads = 0;
    robot.broker->plan("QVMemory.getData", [&] {
      if (++reads == broken) throw std::runtime_error("memory is gone");
    });
    robot.devices->setActuatorHandler("modeActuator", [](const std::string&, const QVValue&) {});
    const auto start = ko::Clock::now();
    sut->setDiagnosis(true);
    log.clear();
    sut->subscribe("test");
    sut->unsubscribe("test");
    EXPECT_FALSE(sut->isDiagnosisSucess());
    EXPECT_EQ(log.lines().back(), "error" + kSetKey + "Unable to get operation mode for Front");
    EXPECT_EQ(elapsedSince(start), milliseconds(std::max(0, broken - 3) * 20)) << broken;
  }
}

TEST_F(LaserSensorTest, aDeviceManagerThatRefusesIsAFailure) {
  const auto sut = makeLaser({"x", "y"});
  const std::string line = "error" + kSetKey + "Unable to set operation mode for Front";
  for (const std::string method : {"DCM.set", "DCM.getTime"}) {
    log.clear();
    robot.broker->planFailure(method, "busy");
    sut->setDiagnosis(true);
    sut->subscribe(method);
    EXPECT_FALSE(sut->isDiagnosisSucess());
    EXPECT_EQ(log.lines().back(), line);
    robot.broker->forgetPlan(method);
  }
}

}  // namespace
}  // namespace QV::sensor
