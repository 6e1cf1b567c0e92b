#include "sensor/range/hole_laser_sensor.h"

#include <limits>

#include <gmock/gmock.h>

#include "tests/support/fake_robot.h"
#include "tests/support/log_capture.h"

namespace QV::sensor {
namespace {

using Math::Position3D;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();
const std::string kError = "error Navigation.HoleLaserSensor.xGetData: ";
const std::vector<Position3D> kScan{{0.30f, 0.05f, 0.0f}, {0.32f, -0.04f, 0.0f}};
const std::vector<Position3D> kHole{{0.1f, 0.05f, 0.0f}, {0.1f, -0.04f, 0.0f}};

class HoleLaserSensorTest : public testing::Test {
 protected:
  HoleLaserSensorTest() {
    robot.memory.insertData("mode", 1);
    robot.memory.insertData("stamp", 9'000);
    const float coordinates[] = {0.30f, 0.05f, 0.32f, -0.04f};
    for (int i = 0; i < 4; ++i) robot.memory.insertData("k" + std::to_string(i), coordinates[i]);
    robot.memory.insertData("error", 0);
    robot.memory.insertData("status", 2);
    sut.subscribe("test");
    log.clear();
  }

  test::FakeRobot robot;
  test::LogCapture log;
  HoleLaserSensor sut{"Hole",
                      "HoleLaser",
                      Math::SensorFieldOfView2D(0.1f, 0.5f, 0.4f, 1),
                      robot.broker,
                      {"k0", "k1", "k2", "k3"},
                      1,
                      "modeActuator",
                      "mode",
                      "stamp",
                      "error",
                      "status"};
};

TEST_F(HoleLaserSensorTest, theStatusesSayWhatBecomesOfThePoints) {
  struct Case {
    QVValue error;
    QVValue status;
    std::vector<Position3D> points;
  };
  const Case cases[] = {
      {0, 2, kScan},
      {0, 1, kHole},
      {0, 4, kHole},
      {0, 0, {}},
      {0, 3, {}},
      {0, 5, {}},
      {0, -1, {}},
      {1, 2, {}},
      {1, 4, {}},
      {-1, 1, {}},
      {0.9f, 2.9f, kScan},
      {-0.9f, 1.9f, kHole},
      {0.0f, 0.9f, {}},
      {1.9f, 2, {}},
      {kNan, 2, {}},
      {kInf, 2, {}},
      {1e30f, 2, {}},
      {-1e30f, 2, {}},
      {0, kNan, {}},
      {0, kInf, {}},
      {0, 1e30f, {}},
      {0, -1e30f, {}},
      {0, 4294967298.0f, {}},
      {false, true, kHole},
  };
  for (const Case& c : cases) {
    robot.memory.insertData("error", c.error);
    robot.memory.insertData("status", c.status);
    const auto records = sut.getData();
    ASSERT_EQ(records.size(), 1u) << c.error << " " << c.status;
    EXPECT_THAT(records[0].points, ElementsAreArray(c.points)) << c.error << " " << c.status;
  }
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(HoleLaserSensorTest, onlyThePointsDifferFromTheLasersRecord) {
  const auto expected = sut.getData();
  ASSERT_EQ(expected.size(), 1u);
  EXPECT_EQ(expected[0].sensorName, "Hole");
  EXPECT_EQ(expected[0].familyName, "HoleLaser");
  EXPECT_EQ(expected[0].timestamp, test::at(8'950'000'000));
  for (const int status : {0, 1}) {
    robot.memory.insertData("status", status);
    auto records = sut.getData();
    ASSERT_EQ(records.size(), 1u);
    records[0].points = expected[0].points;
    EXPECT_EQ(records, expected);
  }
}

TEST_F(HoleLaserSensorTest, aStatusThatCannotBeReadGivesNothingAndTheLaserIsNotRead) {
  const std::string wrong = "QVValue::toFloat: float expected, string given";
  for (const std::string key : {"status", "error"}) {
    robot.memory.insertData(key, "fine");
    log.clear();
    EXPECT_THAT(sut.getData(), IsEmpty());
    EXPECT_THAT(log.lines(),
                ElementsAre(kError + "unable to retrieve data: " + key + "\n" + wrong));
  }
  EXPECT_THAT(robot.broker->callsTo("QVMotion"), IsEmpty());
}

TEST_F(HoleLaserSensorTest, aScanThatCannotBeReadGivesNothing) {
  robot.memory.insertData("k3", "left");
  EXPECT_THAT(sut.getData(), IsEmpty());
  EXPECT_THAT(log.lines(), ElementsAre(kError + "Invalid hole data for Hole"));
  EXPECT_EQ(robot.broker->callsTo("QVMotion").size(), 1u);
}

}  // namespace
}  // namespace QV::sensor
