#include "sensor/range/internal/blind_zone_sensor.h"

#include <cmath>

#include "tests/support/fake_robot.h"

namespace QV::sensor {
namespace {

const Math::SensorFieldOfView2D kBlindZoneView(0.3f, 1.5f, 0.5f, 1);
const std::string kBlindZoneError = "error Navigation.BlindZoneSensor.";

struct BlindZoneSensorTest : test::FakeRobotTest {
  BlindZoneSensorTest() {
    const auto listener = boost::make_shared<QVModule>("listener");
    listener->bindMethod("hear", [this](const std::string&, const QVValue& value,
                                        const std::string&) { events.push_back(value); });
    broker->registerModule(listener);
    memory.subscribeToEvent("Navigation/MotionDetected", "listener", "hear");
  }

  BlindZoneSensor makeSensor(const std::vector<std::string>& keys) {
    return BlindZoneSensor("Blind", "BlindZone", broker, keys, kBlindZoneView);
  }

  /** The x of the reading of `value`, and how many events there are then; without one, 0. */
  std::pair<float, std::size_t> read(const QVValue& value) {
    memory.insertData("detector", value);
    const auto records = readOf(sut);
    time.runDue();
    return {records.empty() ? 0.0f : records[0].points.at(0).x, events.size()};
  }

  std::vector<QVValue> events;
  BlindZoneSensor sut = makeSensor({"detector"});
};

TEST_F(BlindZoneSensorTest, reportsEachChangeOnce) {
  const std::pair<float, std::size_t> far0{1.5f, 1}, near1{0.3f, 2}, far2{1.5f, 3};
  EXPECT_EQ(read(1), std::pair(0.3f, std::size_t{0}));
  EXPECT_EQ(read(0), far0);
  EXPECT_EQ(read(0), far0);
  EXPECT_EQ(read(1), near1);
  EXPECT_EQ(read(1), near1);
  EXPECT_EQ(read(0), far2);
}

TEST_F(BlindZoneSensorTest, recordsAndEventsNameTheSensorAndThePlaceInTheGroundFrame) {
  const auto place = Math::Transform::fromPosition({1.0f, 2.0f, 0.25f}) *
                     Math::rotationFrom3DRotation(0.0f, 0.0f, std::acos(0.0f));
  motion->transform = place.toVector();
  read(0.0f);
  const std::vector<Math::Position3D> points{{1.5f, 0.0f, 0.0f}};
  const auto now = ko::Clock::now();
  const Math::MetricalData expected{"Blind", "BlindZone", kBlindZoneView, place, points, now};
  EXPECT_THAT(readOf(sut), ElementsAre(expected));
  EXPECT_EQ(broker->callsTo("QVMotion").back(), "getTransform[\"Blind\", 1, true]");
  ASSERT_EQ(events.size(), 1u);
  EXPECT_EQ(events[0], QVValue::array("Blind", events[0][1], false));
  EXPECT_THAT(events[0][1].as<std::vector<float>>(),
              ElementsAre(FloatNear(1.0f, 1e-6f), FloatNear(3.5f, 1e-6f), 0.25f));
}

TEST_F(BlindZoneSensorTest, onlyMoreThanTheLimitIsADetection) {
  const std::pair<QVValue, float> cases[] = {{0.9f, 1.5f},  {std::nextafter(0.9f, 1.0f), 0.3f},
                                             {true, 0.3f},  {1e30f, 0.3f},
                                             {-kInf, 1.5f}, {kNan, 1.5f}};
  for (const auto& [value, range] : cases) EXPECT_EQ(read(value).first, range) << value;
}

TEST_F(BlindZoneSensorTest, whileTheRobotMovesTheZoneIsNotJudged) {
  const std::pair<std::vector<float>, float> cases[] = {
      {{0.02f, 0.0f, 0.0f}, 0.0f},    {{0.0f, -0.02f, 0.0f}, 0.0f},    {{0.0f, 0.0f, -0.11f}, 0.0f},
      {{0.008f, 0.008f, 0.0f}, 0.0f}, {{0.006f, -0.006f, 0.0f}, 1.5f}, {{0.01f, 0.0f, 0.0f}, 1.5f},
      {{0.005f, 0.0f, 0.05f}, 1.5f},  {{0.0f, 0.0f, 0.1f}, 1.5f}};
  for (const auto& [velocity, range] : cases) {
    motion->velocity = velocity;
    EXPECT_EQ(read(0.0f), std::pair(range, std::size_t{range > 0.0f})) << motion->velocity;
  }
}

TEST_F(BlindZoneSensorTest, aFailingMotionServiceGivesNoRecord) {
  motion->velocity = std::vector<float>(2, 0.0f);
  read(0.0f);
  motion->velocity = std::vector<float>{0.0f, kNan, 0.0f};
  read(1.0f);
  motion->velocity = std::vector<float>(3, 0.0f);
  motion->transform = std::vector<float>(11, 0.0f);
  read(0.0f);
  broker->planFailure("QVMotion.getTransform", "no such frame");
  EXPECT_EQ(read(0.0f), std::pair(0.0f, std::size_t{0}));
  const std::string start = kBlindZoneError + "xGetData: Unable to retrieve transform: ";
  EXPECT_THAT(log.lines(), ElementsAre(start + "Pose2D: 3 floats (x, y, theta) expected, 2 given",
                                       start + "the robot's velocity is not a number",
                                       start + "Transform: 12 floats expected, 11 given",
                                       start + "no such frame"));
}

TEST_F(BlindZoneSensorTest, anUnreadableDetectorGivesNoRecordAndCountsAsNoChange) {
  for (const QVValue& value : {QVValue("seen"), QVValue(), QVValue::array(1.0f)}) {
    EXPECT_EQ(read(value), std::pair(0.0f, std::size_t{0})) << value;
  }
  broker->plan("QVMemory.getData", [] { throw 42; });
  EXPECT_EQ(read(0.0f), std::pair(0.0f, std::size_t{0}));
  BlindZoneSensor keyless = makeSensor({});
  EXPECT_THAT(readOf(keyless), IsEmpty());
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(BlindZoneSensorTest, anEventThatMemoryRefusesIsLoggedAndLost) {
  broker->planFailure("QVMemory.raiseEvent", "full");
  EXPECT_EQ(read(0.0f).first, 1.5f);
  EXPECT_EQ(read(0.0f).first, 1.5f);
  broker->plan("QVMemory.declareEvent", [] { throw 42; });
  BlindZoneSensor undeclared = makeSensor({"detector"});
  EXPECT_EQ(readOf(undeclared).size(), 1u);
  const std::string raise =
      kBlindZoneError + "xGetData: Unable to raise Navigation/MotionDetected: full";
  EXPECT_THAT(log.lines(),
              ElementsAre(raise,
                          kBlindZoneError +
                              "BlindZoneSensor: Unable to declare event Navigation/MotionDetected",
                          raise));
}

}  // namespace
}  // namespace QV::sensor
