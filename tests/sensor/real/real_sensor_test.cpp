#include "sensor/real/real_sensor.h"

#include <cmath>
#include <limits>

#include <gmock/gmock.h>

#include "tests/support/fake_robot.h"
#include "tests/support/log_capture.h"
#include "tests/support/throws.h"

namespace QV::sensor {
namespace {

using boost::chrono::milliseconds;
using Math::MetricalData;
using test::at;
using test::errorOf;
using testing::ElementsAre;
using testing::IsEmpty;

const Math::SensorFieldOfView2D kFieldOfView(0.2f, 3.0f, 1.0f, 1);
constexpr std::int64_t kSecond = 1'000'000'000;

class PlainRealSensor : public RealSensor {
 public:
  PlainRealSensor(const std::vector<std::string>& keys, const boost::shared_ptr<QVBroker>& broker)
      : RealSensor("Front", "Plain", kFieldOfView, keys, broker) {}

  using RealSensor::xCorrectMetricalDataWithTimestamp;
  using RealSensor::xGetMetricalDataMeta;

 protected:
  std::vector<MetricalData> xGetData() const override { return {xGetMetricalDataMeta()}; }
  bool xSubscribeToHardware() override { return true; }
  bool xUnsubscribeFromHardware() override { return true; }
};

class RealSensorTest : public testing::Test {
 protected:
  /** A record of the robot's start, one point, somewhere. */
  static MetricalData oldRecord(const std::string& name) {
    MetricalData record;
    record.sensorName = name;
    record.fieldOfView = kFieldOfView;
    record.sensorTransform = Math::Transform::fromPosition({5.0f, 6.0f, 7.0f});
    record.points = {{1.0f, 2.0f, 3.0f}};
    return record;
  }

  void guard(std::vector<MetricalData>& records, std::int64_t now, milliseconds maxAge,
             float step = 0.25f) const {
    sut.xCorrectMetricalDataWithTimestamp(records, at(now), maxAge, QVMotionProxy(robot.broker),
                                          0.5f, step);
  }

  test::FakeRobot robot;
  test::LogCapture log;
  PlainRealSensor sut{{}, robot.broker};
};

TEST_F(RealSensorTest, aRecordStartsWithTheSensorItsFieldOfViewAndTheDevicesTime) {
  robot.time.advanceTo(at(12 * kSecond + 345'999'999));
  sut.subscribe("test");
  MetricalData expected;
  expected.sensorName = "Front";
  expected.familyName = "Plain";
  expected.fieldOfView = kFieldOfView;
  expected.timestamp = at(12 * kSecond + 345'000'000);
  EXPECT_THAT(sut.getData(), ElementsAre(expected));
  PlainRealSensor withKeys({"a", "b", "c"}, robot.broker);
  EXPECT_EQ(withKeys.xGetMetricalDataMeta().fieldOfView.rayCount, 3);
}

TEST_F(RealSensorTest, theDevicesTimeIsReadAcrossTheWrapOfItsCount) {
  const std::int64_t weeks = (std::int64_t{1} << 32) + 5;
  robot.time.advanceTo(ko::Clock::time_point(milliseconds(weeks)));
  EXPECT_EQ(sut.xGetMetricalDataMeta().timestamp, ko::Clock::now());
}

TEST_F(RealSensorTest, aMissingModuleLeavesTheConstructor) {
  for (const std::string module : {"DCM", "QVMotion", "QVMemory"}) {
    robot.broker->unregisterModule(module);
    EXPECT_EQ(errorOf([&] { PlainRealSensor({}, robot.broker); }),
              "QVProxy::QVProxy: no module \"" + module + "\"");
  }
}

TEST_F(RealSensorTest, aDeviceManagerThatFailsReachesTheReader) {
  robot.broker->planFailure("DCM.getTime", "no clock");
  sut.subscribe("test");
  EXPECT_EQ(errorOf([&] { sut.getData(); }), "no clock");
}

TEST_F(RealSensorTest, onlyRecordsOlderThanTheLimitAreReplaced) {
  const auto forEver = milliseconds::max();
  const std::int64_t latest = std::numeric_limits<std::int64_t>::max();
  struct Case {
    std::int64_t now;
    milliseconds maxAge;
    bool replaced;
  };
  const Case cases[] = {
      {500'000'000, milliseconds(500), false},
      {500'000'001, milliseconds(500), true},
      {0, milliseconds(0), false},
      {1, milliseconds(0), true},
      {-kSecond, milliseconds(0), false},
      {-kSecond, milliseconds(-2000), true},
      {latest - kSecond, forEver, false},
      {kSecond - latest, -forEver, true},
  };
  for (const Case& c : cases) {
    std::vector<MetricalData> records{oldRecord("Front")};
    guard(records, c.now, c.maxAge);
    EXPECT_EQ(records[0] != oldRecord("Front"), c.replaced)
        << c.now << " ns, " << c.maxAge.count() << " ms";
  }
}

TEST_F(RealSensorTest, aStaleRecordBecomesAWallAtTheSensorsPresentPlace) {
  robot.motion->transform = test::tiltedFrame().toVector();
  std::vector<MetricalData> records{oldRecord("Front")};
  guard(records, 1'234'999'999, milliseconds(1000));
  EXPECT_EQ(records[0].timestamp, at(0));
  EXPECT_EQ(records[0].sensorTransform, test::tiltedFrame());
  ASSERT_EQ(records[0].points.size(), 4u);
  float angle = -0.5f;
  for (const Math::Position3D& point : records[0].points) {
    EXPECT_FLOAT_EQ(point.x, 0.5f * std::cos(angle));
    EXPECT_FLOAT_EQ(point.y, 0.5f * std::sin(angle));
    EXPECT_EQ(point.z, 0.0f);
    angle += 0.25f;
  }
  EXPECT_THAT(robot.broker->callsTo("QVMotion"), ElementsAre("getTransform[\"Front\", 1, true]"));
  EXPECT_THAT(log.lines(),
              ElementsAre("warning Navigation.RealSensor.xCorrectMetricalDataWithTimestamp: "
                          "Data from Front are 1234 milliseconds old."));
}

TEST_F(RealSensorTest, theWallHasAsManyPointsAsWholeStepsFit) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  struct Case {
    float angularRange;
    float step;
    std::size_t points;
  };
  const Case cases[] = {{1.0f, 0.3f, 3},  {1.0f, 1.0f, 1},   {1.0f, 1.01f, 0},
                        {0.0f, 0.25f, 0}, {1.0f, -0.25f, 0}, {1.0f, 0.0f, 0},
                        {0.0f, 0.0f, 0},  {nan, 0.25f, 0},   {1.0f, nan, 0}};
  for (const Case& c : cases) {
    std::vector<MetricalData> records{oldRecord("Front")};
    records[0].fieldOfView.angularRange = c.angularRange;
    guard(records, kSecond, milliseconds(0), c.step);
    EXPECT_EQ(records[0].points.size(), c.points) << c.angularRange << " / " << c.step;
  }
}

TEST_F(RealSensorTest, aPlaceThatIsNotToldLeavesTheRecordEmptyAndTheOthersTheirWall) {
  std::vector<MetricalData> records{oldRecord("Lost"), oldRecord("Short"), oldRecord("Front")};
  int questions = 0;
  robot.broker->plan("QVMotion.getTransform", [&] {
    ++questions;
    if (questions == 1) throw std::runtime_error("no frame Lost");
    robot.motion->transform = std::vector<float>(questions == 2 ? 11 : 12, 0.5f);
  });
  guard(records, kSecond, milliseconds(0));
  for (std::size_t i = 0; i < 2; ++i) {
    EXPECT_THAT(records[i].points, IsEmpty());
    EXPECT_EQ(records[i].sensorTransform, oldRecord("").sensorTransform);
  }
  EXPECT_EQ(records[2].points.size(), 4u);
  const std::string start = "warning Navigation.RealSensor.xCorrectMetricalDataWithTimestamp: ";
  EXPECT_THAT(log.lines(), ElementsAre(start + "Data from Lost are 1000 milliseconds old.",
                                       start + "no frame Lost",
                                       start + "Data from Short are 1000 milliseconds old.",
                                       start + "Transform: 12 floats expected, 11 given",
                                       start + "Data from Front are 1000 milliseconds old."));
}

}  // namespace
}  // namespace QV::sensor
