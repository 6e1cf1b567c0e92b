#include "sensor/range/blind_zone_sensor.h"

#include <cmath>
#include <limits>

#include <gmock/gmock.h>

#include "tests/support/fake_robot.h"
#include "tests/support/log_capture.h"
#include "tests/support/throws.h"

namespace QV::sensor {
namespace {

using Math::Position3D;
using test::errorOf;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();
const Math::SensorFieldOfView2D kFieldOfView(0.3f, 1.5f, 0.5f, 1);
const char kEvent[] = "Navigation/MotionDetected";
const std::string kError = "error Navigation.BlindZoneSensor.";

class BlindZoneSensorTest : public testing::Test {
 protected:
  BlindZoneSensorTest() {
    const auto listener = boost::make_shared<QVModule>("listener");
    listener->bindMethod("onEvent", [this](const std::string&, const QVValue& value,
                                           const std::string&) { events.push_back(value); });
    robot.broker->registerModule(listener);
    robot.memory.subscribeToEvent(kEvent, "listener", "onEvent");
  }

  BlindZoneSensor makeSensor(const std::vector<std::string>& keys) {
    return BlindZoneSensor("Blind", "BlindZone", robot.broker, keys, kFieldOfView);
  }

  /** Reads once while the detector says `value`, and gives the reading's x; nothing as 0. */
  float read(const QVValue& value) {
    robot.memory.insertData("detector", value);
    sut.subscribe("test");
    const auto records = sut.getData();
    robot.time.runDue();
    if (records.empty()) return 0.0f;
    EXPECT_EQ(records.size(), 1u);
    EXPECT_EQ(records[0].points.size(), 1u);
    EXPECT_EQ(records[0].points.at(0), Position3D(records[0].points[0].x, 0.0f, 0.0f));
    return records[0].points[0].x;
  }

  /** What the events so far say, without their point. */
  std::vector<bool> detections() const {
    std::vector<bool> result;
    for (const QVValue& event : events) result.push_back(event[2].toBool());
    return result;
  }

  test::FakeRobot robot;
  test::LogCapture log;
  std::vector<QVValue> events;
  BlindZoneSensor sut{"Blind", "BlindZone", robot.broker, {"detector"}, kFieldOfView};
};

TEST_F(BlindZoneSensorTest, tellsEachChangeOnce) {
  const std::pair<float, float> cases[] = {{0, 1.5f}, {0, 1.5f}, {1, 0.3f}, {1, 0.3f}, {0, 1.5f}};
  std::vector<std::size_t> counts;
  for (const auto& [value, range] : cases) {
    EXPECT_EQ(read(value), range);
    counts.push_back(events.size());
  }
  EXPECT_THAT(counts, ElementsAre(1, 1, 2, 2, 3));
  EXPECT_THAT(detections(), ElementsAre(false, true, false));
}

TEST_F(BlindZoneSensorTest, aFirstDetectionIsNoChange) {
  EXPECT_EQ(read(1.0f), 0.3f);
  EXPECT_THAT(events, IsEmpty());
  EXPECT_EQ(read(0.0f), 1.5f);
  EXPECT_THAT(detections(), ElementsAre(false));
}

TEST_F(BlindZoneSensorTest, anEventNamesTheSensorAndTheZonesFarPointInTheRobotsFrame) {
  robot.motion->transform = (Math::Transform::fromPosition({1.0f, 2.0f, 0.25f}) *
                             Math::transformFromPose2D({0.0f, 0.0f, std::acos(-1.0f) / 2.0f}))
                                .toVector();
  read(0.0f);
  ASSERT_EQ(events.size(), 1u);
  ASSERT_EQ(events[0].getSize(), 3u);
  EXPECT_EQ(events[0][0], QVValue("Blind"));
  const auto point = events[0][1].as<std::vector<float>>();
  EXPECT_THAT(point, ElementsAre(testing::FloatNear(1.0f, 1e-6f), testing::FloatEq(3.5f), 0.25f));
  EXPECT_EQ(events[0][2], QVValue(false));
}

TEST_F(BlindZoneSensorTest, aRecordTellsWhoWhereAndWhen) {
  robot.motion->transform = test::tiltedFrame().toVector();
  robot.memory.insertData("detector", 1);
  sut.subscribe("test");
  const auto records = sut.getData();
  Math::MetricalData expected;
  expected.sensorName = "Blind";
  expected.familyName = "BlindZone";
  expected.fieldOfView = kFieldOfView;
  expected.sensorTransform = test::tiltedFrame();
  expected.points = {{0.3f, 0.0f, 0.0f}};
  expected.timestamp = ko::Clock::now();
  EXPECT_THAT(records, ElementsAre(expected));
  EXPECT_THAT(robot.broker->callsTo("QVMotion"),
              ElementsAre("getRobotVelocity[]", "getTransform[\"Blind\", 1, true]"));
}

TEST_F(BlindZoneSensorTest, onlyMoreThanTheLimitIsADetection) {
  const std::pair<QVValue, float> cases[] = {{0.9f, 1.5f},  {std::nextafter(0.9f, 1.0f), 0.3f},
                                             {1, 0.3f},     {true, 0.3f},
                                             {0, 1.5f},     {false, 1.5f},
                                             {1e30f, 0.3f}, {kInf, 0.3f},
                                             {-kInf, 1.5f}, {kNan, 1.5f}};
  for (const auto& [value, range] : cases) EXPECT_EQ(read(value), range) << value;
}

TEST_F(BlindZoneSensorTest, whileTheRobotMovesTheZoneIsNotJudged) {
  struct Case {
    std::vector<float> velocity;
    bool judged;
  };
  const Case cases[] = {
      {{0.02f, 0.0f, 0.0f}, false},    {{-0.02f, 0.0f, 0.0f}, false},
      {{0.0f, 0.02f, 0.0f}, false},    {{0.008f, 0.008f, 0.0f}, false},
      {{0.006f, -0.006f, 0.0f}, true}, {{0.01f, 0.0f, 0.0f}, true},
      {{0.005f, 0.0f, 0.05f}, true},   {{0.0f, 0.0f, 0.1f}, true},
      {{0.0f, 0.0f, -0.11f}, false},   {{0.0f, 0.0f, 0.11f}, false},
  };
  for (const Case& c : cases) {
    robot.motion->velocity = c.velocity;
    EXPECT_EQ(read(1.0f), c.judged ? 0.3f : 0.0f) << robot.motion->velocity;
  }
  robot.motion->velocity = std::vector<float>{0.02f, 0.0f, 0.0f};
  read(0.0f);
  EXPECT_THAT(events, IsEmpty());
  robot.motion->velocity = std::vector<float>(3, 0.0f);
  EXPECT_EQ(read(0.0f), 1.5f);
  EXPECT_THAT(detections(), ElementsAre(false));
}

TEST_F(BlindZoneSensorTest, aMotionServiceThatFailsGivesNothing) {
  robot.motion->velocity = std::vector<float>(2, 0.0f);
  EXPECT_EQ(read(0.0f), 0.0f);
  robot.motion->velocity = std::vector<float>(3, 0.0f);
  robot.motion->transform = std::vector<float>(11, 0.0f);
  EXPECT_EQ(read(0.0f), 0.0f);
  robot.broker->planFailure("QVMotion.getTransform", "no such frame");
  EXPECT_EQ(read(0.0f), 0.0f);
  const std::string start = kError + "xGetData: Unable to retrieve transform: ";
  EXPECT_THAT(log.lines(), ElementsAre(start + "Pose2D: 3 floats (x, y, theta) expected, 2 given",
                                       start + "Transform: 12 floats expected, 11 given",
                                       start + "no such frame"));
  EXPECT_THAT(events, IsEmpty());
}

TEST_F(BlindZoneSensorTest, aDetectorThatCannotBeReadGivesNothingAndIsNoChange) {
  read(0.0f);
  for (const QVValue& value : {QVValue("seen"), QVValue(), QVValue::array(1.0f)}) {
    EXPECT_EQ(read(value), 0.0f) << value;
  }
  robot.broker->plan("QVMemory.getData", [] { throw 42; });
  EXPECT_EQ(read(1.0f), 0.0f);
  BlindZoneSensor keyless = makeSensor({});
  keyless.subscribe("test");
  EXPECT_THAT(keyless.getData(), IsEmpty());
  EXPECT_EQ(events.size(), 1u);
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(BlindZoneSensorTest, anEventThatCannotBeRaisedIsLoggedAndLost) {
  robot.broker->planFailure("QVMemory.raiseEvent", "full");
  EXPECT_EQ(read(0.0f), 1.5f);
  EXPECT_EQ(read(0.0f), 1.5f);
  EXPECT_THAT(log.lines(), ElementsAre(kError + "xGetData: Unable to raise " + kEvent + ": full"));
}

TEST_F(BlindZoneSensorTest, takesOneKeyAndLivesWithoutTheDeclaration) {
  EXPECT_EQ(errorOf([&] {
              makeSensor({"a", "b"});
            }),
            "Blind cannot be instantiated with more than one key");
  EXPECT_THAT(robot.broker->callsTo("QVMemory"),
              testing::Contains("declareEvent[\"" + std::string(kEvent) + "\"]").Times(1));
  robot.broker->plan("QVMemory.declareEvent", [] { throw 42; });
  BlindZoneSensor sensor = makeSensor({"detector"});
  EXPECT_THAT(log.lines(),
              ElementsAre(kError + "BlindZoneSensor: Unable to declare event " + kEvent));
  sensor.subscribe("test");
  robot.memory.insertData("detector", 1);
  EXPECT_EQ(sensor.getData().size(), 1u);
}

}  // namespace
}  // namespace QV::sensor
