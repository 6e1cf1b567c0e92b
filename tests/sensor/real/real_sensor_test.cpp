#include "sensor/real/real_sensor.h"

#include <cmath>

#include "tests/support/fake_robot.h"

namespace QV::sensor {
namespace {

using Math::MetricalData;

const Math::SensorFieldOfView2D kFieldOfView(0.2f, 3.0f, 1.0f, 1);
const std::string kGuard = "warning Navigation.RealSensor.xCorrectMetricalDataWithTimestamp: ";
constexpr std::int64_t kSecond = 1'000'000'000;

ko::Clock::time_point at(std::int64_t nanoseconds) {
  return ko::Clock::time_point(ko::Duration(nanoseconds));
}

class PlainRealSensor : public RealSensor {
 public:
  PlainRealSensor(const std::vector<std::string>& keys, const boost::shared_ptr<QVBroker>& broker)
      : RealSensor("Front", "Plain", kFieldOfView, keys, broker) {}

  using RealSensor::xCorrectMetricalDataWithTimestamp;

 protected:
  std::vector<MetricalData> xGetData() const override { return {xGetMetricalDataMeta()}; }
  bool xSubscribeToHardware() override { return true; }
  bool xUnsubscribeFromHardware() override { return true; }
};

struct RealSensorTest : test::FakeRobotTest {
  /** A record of time 0, one point, somewhere. */
  static MetricalData oldRecord(const std::string& name) {
    const auto place = Math::Transform::fromPosition({5.0f, 6.0f, 7.0f});
    return {name, "Plain", kFieldOfView, place, {{1.0f, 2.0f, 3.0f}}, at(0)};
  }

  void guard(std::vector<MetricalData>& records, std::int64_t now, milliseconds maxAge,
             float step = 0.25f) const {
    sut.xCorrectMetricalDataWithTimestamp(records, at(now), maxAge, QVMotionProxy(broker), 0.5f,
                                          step);
  }

  PlainRealSensor sut{{}, broker};
};

TEST_F(RealSensorTest, aRecordStartsWithTheSensorItsFieldOfViewAndTheDevicesTime) {
  MetricalData expected{"Front", "Plain", kFieldOfView, {}, {}, {}};
  // The second is beyond the wrap of the devices' count.
  for (const std::int64_t milliseconds : {12'345LL, (1LL << 32) + 5}) {
    time.advanceTo(at(milliseconds * 1'000'000 + 999'999));
    expected.timestamp = at(milliseconds * 1'000'000);
    EXPECT_THAT(readOf(sut), ElementsAre(expected));
  }
  PlainRealSensor withKeys({"a", "b", "c"}, broker);
  EXPECT_EQ(readOf(withKeys).at(0).fieldOfView.rayCount, 3);
  for (const std::int64_t count : {1LL << 31, -(1LL << 31) - 1}) {
    broker->planAnswer("DCM.getTime", count);
    EXPECT_EQ(errorOf([&] { readOf(sut); }),
              "DCM::getTime: a signed 32-bit count expected, " + std::to_string(count) + " given");
  }
}

TEST_F(RealSensorTest, onlyRecordsOlderThanTheLimitAreReplaced) {
  constexpr auto kForEver = milliseconds::max();
  constexpr std::int64_t kLongAgo = std::numeric_limits<std::int64_t>::max() - kSecond;
  struct Case {
    std::int64_t now;
    milliseconds maxAge;
    bool replaced;
  };
  const Case cases[] = {{500'000'000, milliseconds(500), false},
                        {500'000'001, milliseconds(500), true},
                        {-kSecond, milliseconds(0), false},
                        {-kSecond, milliseconds(-2000), true},
                        {kLongAgo, kForEver, false},
                        {-kLongAgo, -kForEver, true}};
  for (const Case& c : cases) {
    std::vector<MetricalData> records{oldRecord("Front")};
    guard(records, c.now, c.maxAge);
    EXPECT_EQ(records[0] != oldRecord("Front"), c.replaced)
        << c.now << " ns, " << c.maxAge.count() << " ms";
  }
}

TEST_F(RealSensorTest, anOldRecordIsReplacedByAWallOfPointsAtTheSensorsPresentPose) {
  motion->transform = test::tiltedFrame().toVector();
  std::vector<MetricalData> records{oldRecord("Front")};
  guard(records, 1'234'999'999, milliseconds(1000));
  EXPECT_EQ(records[0].timestamp, at(0));
  EXPECT_EQ(records[0].sensorTransform, test::tiltedFrame());
  ASSERT_EQ(records[0].points.size(), 4u);
  for (std::size_t i = 0; i < 4; ++i) {
    const float angle = -0.5f + 0.25f * static_cast<float>(i);
    EXPECT_FLOAT_EQ(records[0].points[i].x, 0.5f * std::cos(angle));
    EXPECT_FLOAT_EQ(records[0].points[i].y, 0.5f * std::sin(angle));
  }
  EXPECT_THAT(broker->callsTo("QVMotion"), ElementsAre("getTransform[\"Front\", 1, true]"));
  EXPECT_THAT(log.lines(), ElementsAre(kGuard + "Data from Front are 1234 milliseconds old."));
}

TEST_F(RealSensorTest, theWallHasOnePointPerWholeAngularStep) {
  struct Case {
    float angularRange;
    float step;
    std::size_t points;
  };
  const Case cases[] = {{1.0f, 0.3f, 3},  {1.0f, 1.0f, 1},   {1.0f, 1.01f, 0},
                        {0.0f, 0.25f, 0}, {1.0f, -0.25f, 0}, {kInf, 0.25f, 0},
                        {kNan, 0.25f, 0}, {1.0f, kNan, 0},   {0.003f, 0.0f, 100'000}};
  for (const Case& c : cases) {
    std::vector<MetricalData> records{oldRecord("Front")};
    records[0].fieldOfView.angularRange = c.angularRange;
    guard(records, kSecond, milliseconds(0), c.step);
    EXPECT_EQ(records[0].points.size(), c.points) << c.angularRange << " / " << c.step;
  }
  EXPECT_EQ(log.lines().back(), kGuard + "The arc of Front gets no more than 100000 points.");
}

TEST_F(RealSensorTest, withoutATransformARecordStaysEmptyAndOtherRecordsGetTheirWall) {
  std::vector<MetricalData> records{oldRecord("Short"), oldRecord("Front")};
  motion->transform = std::vector<float>(11, 0.5f);
  broker->plan("QVMotion.getTransform", [this, first = true]() mutable {
    if (!first) motion->transform = std::vector<float>(12, 0.5f);
    first = false;
  });
  guard(records, kSecond, milliseconds(0));
  EXPECT_TRUE(records[0].points.empty());
  EXPECT_EQ(records[0].sensorTransform, oldRecord("").sensorTransform);
  EXPECT_EQ(records[1].points.size(), 4u);
  EXPECT_THAT(log.lines(), ElementsAre(kGuard + "Data from Short are 1000 milliseconds old.",
                                       kGuard + "Transform: 12 floats expected, 11 given",
                                       kGuard + "Data from Front are 1000 milliseconds old."));
}

}  // namespace
}  // namespace QV::sensor
