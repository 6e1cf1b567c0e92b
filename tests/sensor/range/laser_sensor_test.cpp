#include "sensor/range/internal/laser_sensor.h"

#include <thread>

#include "robot/services/internal/laser_mode_actuator.h"
#include "tests/support/fake_robot.h"

namespace QV::sensor {
namespace {

using Math::Position3D;
using robot::LaserModeActuator;

const Math::SensorFieldOfView2D kLaserView(0.5f, 5.0f, 1.0f, 1);
const std::string kRead = "error Navigation.LaserSensor.xGetData: ";
const std::string kSetKey = " Navigation.LaserSensor.xSetKey: ";

struct LaserSensorTest : test::FakeRobotTest {
  LaserSensorTest() { memory.insertData("stamp", 90); }

  boost::shared_ptr<LaserSensor> makeLaser(const std::vector<std::string>& keys, int mask = 2) {
    return boost::make_shared<LaserSensor>("Front", "Laser", kLaserView, broker, keys, mask,
                                           "modeActuator", "mode", "stamp");
  }

  /** Writes the coordinates into the keys 0, 1, ... and reads them through a laser. */
  std::vector<Math::MetricalData> read(const std::vector<QVValue>& coordinates) {
    const LaserModeActuator hardware(broker, devices, "modeActuator", "mode", ko::Duration(0));
    std::vector<std::string> keys;
    for (const QVValue& value : coordinates) {
      keys.push_back(std::to_string(keys.size()));
      memory.insertData(keys.back(), value);
    }
    const auto records = readOf(*makeLaser(keys));
    log.clear();
    return records;
  }

  /** Returns how a laser's start ends, and the time that it takes. */
  std::pair<bool, ko::Duration> start(LaserSensor& laser) {
    const auto begin = ko::Clock::now();
    laser.setDiagnosis(true);
    laser.subscribe("test");
    return {laser.isStarted(), ko::Clock::now() - begin};
  }
};

TEST_F(LaserSensorTest, aReadingHasThePointsNearerThanTheMaximumRange) {
  struct Case {
    std::vector<QVValue> coordinates;
    std::vector<Position3D> points;
  };
  const Case cases[] = {{{1.0f, 2.0f, 0.1f, -0.1f}, {{1.0f, 2.0f, 0.0f}, {0.1f, -0.1f, 0.0f}}},
                        {{-3.0f, 4.0f, 1, true}, {{1.0f, 1.0f, 0.0f}}},
                        {{3.0f, 3.9999f}, {{3.0f, 3.9999f, 0.0f}}},
                        {{1.0f, 2.0f, 3.0f}, {{1.0f, 2.0f, 0.0f}}},
                        {{1.0f}, {}},
                        {{}, {}},
                        {{kNan, 1.0f, 1.0f, kNan, kInf, 1.0f, 1.0f, -kInf, 1e30f, 1e30f}, {}}};
  for (const Case& c : cases) {
    const auto records = read(c.coordinates);
    ASSERT_EQ(records.size(), 1u);
    EXPECT_THAT(records[0].points, ElementsAreArray(c.points)) << QVValue(c.coordinates);
    EXPECT_EQ(records[0].fieldOfView.rayCount, static_cast<int>(c.coordinates.size() / 2));
  }
}

TEST_F(LaserSensorTest, aRecordNamesItsSensorAndLiesInTheGroundPlane) {
  motion->transform = test::tiltedFrame().toVector();
  const auto records = read({1.0f, 0.0f});
  ASSERT_EQ(records.size(), 1u);
  EXPECT_EQ(records[0].sensorName, "Front");
  EXPECT_EQ(records[0].familyName, "Laser");
  EXPECT_EQ(records[0].fieldOfView, kLaserView);
  EXPECT_THAT(records[0].sensorTransform,
              test::IsNearFrame(Math::transformFromPose2D({0.1f, -0.2f, 0.7f})));
  EXPECT_EQ(broker->callsTo("QVMotion").back(), "_getSensorTransformAtTime[\"Front\", 40000000]");
}

TEST_F(LaserSensorTest, aScanIsDatedFiftyMillisecondsBeforeItsStamp) {
  constexpr std::int64_t kWrap = std::int64_t{1} << 32;
  const std::pair<QVValue, std::int64_t> cases[] = {{-1'800'192, kWrap - 1'800'192},
                                                    {1024.9f, kWrap + 1024},
                                                    {-1024.9f, kWrap - 1024},
                                                    {kNan, kWrap},
                                                    {-kInf, kWrap / 2},
                                                    {1e30f, kWrap / 2 - 1}};
  // Half an hour before the count wraps.
  time.advanceTo(ko::Clock::time_point(milliseconds(kWrap - 1'800'000)));
  for (const auto& [stamp, expected] : cases) {
    memory.insertData("stamp", stamp);
    EXPECT_EQ(read({1.0f, 0.0f}).at(0).timestamp,
              ko::Clock::time_point(milliseconds(expected - 50)))
        << stamp;
  }
}

TEST_F(LaserSensorTest, anUnreadableValueGivesNoRecord) {
  const LaserModeActuator hardware(broker, devices, "modeActuator", "mode", ko::Duration(0));
  const auto sut = makeLaser({"x", "y"});
  sut->subscribe("test");
  log.clear();
  memory.insertData("x", 1.0f);
  memory.insertData("y", "left");
  EXPECT_THAT(readOf(*sut), IsEmpty());
  broker->plan("QVMemory.getData", [reads = 0]() mutable {
    if (++reads == 2) throw 42;
  });
  EXPECT_THAT(readOf(*sut), IsEmpty());
  EXPECT_THAT(log.lines(), IsEmpty());
  motion->transform = std::vector<float>(11, 0.0f);
  EXPECT_THAT(readOf(*sut), IsEmpty());
  memory.insertData("stamp", "noon");
  EXPECT_THAT(readOf(*sut), IsEmpty());
  EXPECT_THAT(log.lines(), ElementsAre(kRead + "Unable to get transform for Front: \n" +
                                           "Transform: 12 floats expected, 11 given",
                                       kRead + "unable to retrieve data: stamp\n" +
                                           "QVValue::toFloat: float expected, string given"));
}

TEST_F(LaserSensorTest, switchingSetsOrClearsTheLasersBitsOfTheMode) {
  struct Case {
    int mask;
    QVValue current;
    float on;
    float off;
  };
  const Case cases[] = {{2, 5, 7.0f, 5.0f},    {4, 12, 12.0f, 0.0f},    {0x102, 8, 10.0f, 0.0f},
                        {-1, 0, 255.0f, 0.0f}, {1, 6.9f, 7.0f, 6.0f},   {1, 258, 3.0f, 2.0f},
                        {1, kNan, 1.0f, 0.0f}, {1, 1e30f, 255.0f, 6.0f}};
  std::vector<QVValue> commanded;
  devices->setActuatorHandler("modeActuator", [&](const std::string&, const QVValue& mode) {
    commanded.push_back(mode);
    memory.insertData("mode", mode);
  });
  for (const Case& c : cases) {
    commanded.clear();
    memory.insertData("mode", c.current);
    const auto sut = makeLaser({"x", "y"}, c.mask);
    EXPECT_EQ(start(*sut), std::pair(true, ko::Duration(0)));
    sut->unsubscribe("test");
    EXPECT_TRUE(sut->isDiagnosisSucess());
    EXPECT_THAT(commanded, ElementsAre(QVValue(c.on), QVValue(c.off))) << c.mask << c.current;
  }
  EXPECT_EQ(broker->callsTo("DCM").at(1), "set[[\"modeActuator\", \"ClearAll\", [[7.0, 100]]]]");
}

TEST_F(LaserSensorTest, aConfirmationCountsUpToTheSecondToLastPoll) {
  struct Case {
    int delayMs;
    int elapsedMs;
    bool confirmed;
  };
  // Poll n looks (n - 1) * 20 ms after the command and then sleeps for 20 ms.
  const Case cases[] = {{0, 0, true},       {1, 40, true},      {20, 40, true},
                        {21, 60, true},     {950, 980, true},   {970, 1000, false},
                        {990, 1000, false}, {5000, 1000, false}};
  for (const Case& c : cases) {
    const LaserModeActuator hardware(broker, devices, "modeActuator", "mode",
                                     milliseconds(c.delayMs));
    const auto sut = makeLaser({"x", "y"});
    EXPECT_EQ(start(*sut), std::pair(c.confirmed, ko::Duration(milliseconds(c.elapsedMs))))
        << c.delayMs;
    EXPECT_EQ(sut->isDiagnosisSucess(), c.confirmed) << c.delayMs;
  }
}

TEST_F(LaserSensorTest, lasersThatShareAModeAreSwitchedOneAfterTheOther) {
  const LaserModeActuator hardware(broker, devices, "modeActuator", "mode", milliseconds(30));
  const auto left = makeLaser({"x", "y"}, 1);
  const auto right = makeLaser({"x", "y"}, 2);
  for (const bool on : {true, false}) {
    const auto change = [on](LaserSensor& laser) {
      on ? laser.subscribe("test") : laser.unsubscribe("test");
    };
    std::thread other([&] { change(*left); });
    time.awaitSleepers(1);
    change(*right);
    other.join();
    for (const auto& laser : {left, right}) {
      EXPECT_EQ(std::pair(laser->isStarted(), laser->isDiagnosisSucess()), std::pair(on, true));
    }
    EXPECT_EQ(memory.getData("mode"), QVValue(on ? 3 : 0));
  }
}

TEST_F(LaserSensorTest, anUnconfirmedModeIsLoggedAndTimesOut) {
  devices->setActuatorHandler("modeActuator", [](const std::string&, const QVValue&) {});
  memory.insertData("mode", 7);
  const auto sut = makeLaser({"x", "y"});
  EXPECT_EQ(start(*sut), std::pair(true, ko::Duration(0)));
  sut->unsubscribe("test");
  EXPECT_FALSE(sut->isDiagnosisSucess());
  std::vector<std::string> expected{"verbose" + kSetKey + "Getting 7 Front state.",
                                    "verbose" + kSetKey + "Setting 7 for activation.",
                                    "verbose" + kSetKey + "Getting 7 Front state.",
                                    "verbose" + kSetKey + "Setting 5 for desactivation"};
  expected.resize(54, "verbose" + kSetKey + "Waiting update 7 Front state.");
  expected.push_back("error" + kSetKey + "Timeout while setting operation Mode for Front");
  EXPECT_THAT(log.lines(), ElementsAreArray(expected));
}

TEST_F(LaserSensorTest, anUnreadableModeFailsTheStartAtOnce) {
  const auto sut = makeLaser({"x", "y"});
  const std::string line = "error" + kSetKey + "Unable to get operation mode for Front";
  memory.insertData("mode", "on");
  EXPECT_EQ(start(*sut), std::pair(false, ko::Duration(0)));
  EXPECT_THAT(log.lines(), ElementsAre(line));
  EXPECT_THAT(broker->callsTo("DCM"), IsEmpty());
  devices->setActuatorHandler("modeActuator", [](const std::string&, const QVValue&) {});
  memory.insertData("mode", 0);
  // The third read is that of the first poll.
  for (const int broken : {1, 2, 3, 7}) {
    broker->plan("QVMemory.getData", [broken, reads = 0]() mutable {
      if (++reads == broken) throw 42;
    });
    EXPECT_EQ(start(*sut),
              std::pair(false, ko::Duration(milliseconds(std::max(0, broken - 3) * 20))));
    EXPECT_EQ(log.lines().back(), line);
    sut->unsubscribe("test");
  }
}

TEST_F(LaserSensorTest, aRefusingDeviceManagerFailsTheStart) {
  memory.insertData("mode", 0);
  const auto sut = makeLaser({"x", "y"});
  for (const char* method : {"DCM.set", "DCM.getTime"}) {
    broker->planFailure(method, "busy");
    EXPECT_EQ(start(*sut), std::pair(false, ko::Duration(0)));
    EXPECT_EQ(log.lines().back(), "error" + kSetKey + "Unable to set operation mode for Front");
    broker->plan(method, {});
    sut->unsubscribe("test");
  }
}

}  // namespace
}  // namespace QV::sensor
