#include "sensor/range/internal/laser_sensor.h"

#include <thread>

#include "robot/services/internal/laser_mode_actuator.h"
#include "tests/support/fake_robot.h"

namespace QV::sensor {
namespace {

using Math::Position3D;
using robot::LaserModeActuator;

const Math::SensorFieldOfView2D kLaserView(0.5f, 5.0f, 1.2f, 1);
const std::string kRead = "error Navigation.LaserSensor.xGetData: ";

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
};

TEST_F(LaserSensorTest, aReadingHasThePointsNearerThanTheMaximumRange) {
  struct Case {
    std::vector<QVValue> coordinates;
    std::vector<Position3D> points;
  };
  const Case cases[] = {{{1.0f, 2.0f, 0.1f, -0.1f}, {{1.0f, 2.0f, 0.0f}, {0.1f, -0.1f, 0.0f}}},
                        {{-3.0f, 4.0f, 2, true}, {{2.0f, 1.0f, 0.0f}}},
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

}  // namespace
}  // namespace QV::sensor
