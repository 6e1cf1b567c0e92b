#include "sensor/range/internal/hole_laser_sensor.h"

#include "tests/support/fake_robot.h"

namespace QV::sensor {
namespace {

using Math::Position3D;

const std::string kHoleLaserError = "error Navigation.HoleLaserSensor.xGetData: ";
const std::vector<Position3D> kScan{{0.30f, 0.05f, 0.0f}, {0.32f, -0.04f, 0.0f}};
const std::vector<Position3D> kHole{{0.1f, 0.05f, 0.0f}, {0.1f, -0.04f, 0.0f}};

struct HoleLaserSensorTest : test::FakeRobotTest {
  HoleLaserSensorTest() {
    const std::pair<const char*, float> values[] = {
        {"mode", 1.0f}, {"stamp", 90.0f}, {"x0", 0.30f},   {"y0", 0.05f},
        {"x1", 0.32f},  {"y1", -0.04f},   {"error", 0.0f}, {"status", 2.0f}};
    for (const auto& [key, value] : values) memory.insertData(key, value);
    expected = readOf(sut);
    log.clear();
  }

  HoleLaserSensor sut{"Hole",
                      "HoleLaser",
                      Math::SensorFieldOfView2D(0.1f, 0.5f, 0.4f, 1),
                      broker,
                      {"x0", "y0", "x1", "y1"},
                      1,
                      "modeActuator",
                      "mode",
                      "stamp",
                      "error",
                      "status"};
  /** The laser's own. */
  std::vector<Math::MetricalData> expected;
};

TEST_F(HoleLaserSensorTest, theStatusesChangeThePointsAndNothingElse) {
  struct Case {
    QVValue error;
    QVValue status;
    std::vector<Position3D> points;
  };
  const Case cases[] = {
      {0, 2, kScan},       {0, 1, kHole}, {0, 4, kHole},       {0, 0, {}},
      {0, 3, {}},          {0, 5, {}},    {1, 2, {}},          {1, 4, {}},
      {-1, 1, {}},         {1.9f, 2, {}}, {0.9f, 2.9f, kScan}, {-0.9f, 1.9f, kHole},
      {0.0f, 0.9f, {}},    {kNan, 2, {}}, {kInf, 2, {}},       {1e30f, 2, {}},
      {0, 1e30f, {}},      {0, kNan, {}}, {0, -kInf, {}},      {0, 4294967298.0f, {}},
      {false, true, kHole}};
  for (const Case& c : cases) {
    memory.insertData("error", c.error);
    memory.insertData("status", c.status);
    expected.at(0).points = c.points;
    EXPECT_EQ(readOf(sut), expected) << c.error << " " << c.status;
  }
  EXPECT_EQ(expected[0].familyName, "HoleLaser");
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(HoleLaserSensorTest, anUnreadableValueGivesNoRecordAndAnUnreadableStatusSkipsTheScan) {
  const auto calls = broker->callsTo("QVMotion").size();
  for (const char* key : {"status", "error"}) {
    memory.insertData(key, "fine");
    EXPECT_THAT(readOf(sut), IsEmpty());
  }
  EXPECT_EQ(broker->callsTo("QVMotion").size(), calls);
  memory.insertData("status", 2);
  memory.insertData("error", 0);
  memory.insertData("y1", "left");
  EXPECT_THAT(readOf(sut), IsEmpty());
  const std::string wrong = "\nQVValue::toFloat: float expected, string given";
  EXPECT_THAT(log.lines(), ElementsAre(kHoleLaserError + "unable to retrieve data: status" + wrong,
                                       kHoleLaserError + "unable to retrieve data: error" + wrong,
                                       kHoleLaserError + "Invalid hole data for Hole"));
}

}  // namespace
}  // namespace QV::sensor
