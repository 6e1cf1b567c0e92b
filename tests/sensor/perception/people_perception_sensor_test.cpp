#include "sensor/perception/internal/people_perception_sensor.h"

#include <cmath>
#include <optional>
#include <thread>

#include "tests/support/fake_robot.h"

namespace QV::sensor {
namespace {

using testing::Field;

const Math::SensorFieldOfView2D kPeopleView(0.4f, 4.0f, 1.0f, 320);
const std::string kPeopleError = "error QVNavigation.PeoplePerceptionSensor.";
const QVValue kUnread;

QVValue person(const QVValue& distance, const QVValue& angleY, const QVValue& angleZ) {
  return QVValue::array(kUnread, distance, angleY, angleZ);
}

QVValue peopleEvent(const QVValue& people, const QVValue& stamp = QVValue::array(12, 345678),
                    const QVValue& camera = 2) {
  return QVValue::array(stamp, people, kUnread, kUnread, camera);
}

/** `count` people straight ahead. */
QVValue crowd(std::size_t count) {
  return peopleEvent(QVValue::Array(count, person(2.0f, 0.0f, 0.0f)));
}

auto isPoint(float x, float y, float z) {
  return AllOf(Field(&Math::Position3D::x, FloatNear(x, 1e-6f)),
               Field(&Math::Position3D::y, FloatNear(y, 1e-6f)),
               Field(&Math::Position3D::z, FloatNear(z, 1e-6f)));
}

struct PeoplePerceptionSensorTest : test::FakeRobotTest {
  PeoplePerceptionSensorTest() {
    video->bindMethod("getCameraName", [](int index) {
      if (index != 2) throw std::runtime_error("no camera " + std::to_string(index));
      return "DepthCamera";
    });
    navigation->bindMethod("_onPeopleDetected", [this](const std::string& key, const QVValue& value,
                                                       const std::string& message) {
      if (sut) sut->onUpdatePeopleList(key, value, message);
    });
    broker->registerModule(video);
    broker->registerModule(navigation);
    sut.emplace("PeoplePerception", "Asus", kPeopleView, std::vector<std::string>(), broker);
  }

  void raise(const QVValue& value) {
    memory.raiseEvent("PeoplePerception/PeopleDetected", value);
    time.runDue();
  }

  std::vector<Math::Position3D> points() { return readOf(*sut).at(0).points; }

  boost::shared_ptr<QVModule> video = boost::make_shared<QVModule>("QVVideoDevice");
  boost::shared_ptr<QVModule> navigation = boost::make_shared<QVModule>("QVNavigation");
  std::optional<PeoplePerceptionSensor> sut;
};

TEST_F(PeoplePerceptionSensorTest, peopleStandWhereTheCameraSawThem) {
  sut->subscribe("test");
  const auto place = test::tiltedFrame();
  motion->transform = place.toVector();
  const float right = std::acos(0.0f);
  const QVValue extra = QVValue::array("ignored", 3, 0.0f, 0.0f, "ignored");
  raise(peopleEvent(QVValue::array(person(2.0f, 0.0f, 0.0f), person(2.0f, 0.0f, right),
                                   person(2.0f, right, 0.0f), person(1.0f, 0.5f, 0.25f), extra)));
  const auto records = sut->getData();
  ASSERT_THAT(records, SizeIs(1));
  const auto& points = records[0].points;
  const float flat = std::cos(0.5f);
  EXPECT_THAT(
      points,
      ElementsAre(isPoint(2.0f, 0.0f, 0.0f), isPoint(0.0f, 2.0f, 0.0f), isPoint(0.0f, 0.0f, -2.0f),
                  isPoint(flat * std::cos(0.25f), flat * std::sin(0.25f), -std::sin(0.5f)),
                  isPoint(3.0f, 0.0f, 0.0f)));
  const ko::Clock::time_point stamp(ko::Duration(12'345'678'000));
  const Math::MetricalData expected{"PeoplePerception", "Asus", kPeopleView, place, points, stamp};
  EXPECT_EQ(records[0], expected);
  EXPECT_THAT(broker->callsTo("QVMotion"),
              ElementsAre("_getSensorTransformAtTime[\"DepthCamera\", 12345678000]"));
}

TEST_F(PeoplePerceptionSensorTest, aSensorMayBeDestroyedBeforeItsPeopleAreForgotten) {
  sut->onUpdatePeopleList("", crowd(1), "");
  sut.reset();
  time.advance(milliseconds(3000));
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(PeoplePerceptionSensorTest, forgettingNeverRemovesThePeopleOfANewerEvent) {
  sut->subscribe("test");
  constexpr std::size_t kEvents = 300;
  std::thread events([&] {
    for (std::size_t i = 1; i <= kEvents; ++i) sut->onUpdatePeopleList("", crowd(i), "");
  });
  std::size_t seen = 0;
  for (int i = 0; i < 100; ++i) {
    const std::size_t now = points().size();
    EXPECT_TRUE(now == 0 || now >= seen) << now << " after " << seen;
    seen = std::max(seen, now);
    time.advance(milliseconds(2000));
  }
  events.join();
  sut->onUpdatePeopleList("", crowd(kEvents + 1), "");
  time.advance(milliseconds(1999));
  EXPECT_THAT(points(), SizeIs(kEvents + 1));
}

TEST_F(PeoplePerceptionSensorTest, aMalformedEventIsLoggedAndChangesNothing) {
  const std::string format = "Wrong peopleEvent format";
  const std::string stamp = "Wrong peopleEvent timestamp format";
  const QVValue nobody = QVValue::Array();
  const QVValue now = QVValue::array(1, 0);
  const std::pair<QVValue, std::string> cases[] = {
      {QVValue(), format},
      {5, format},
      {QVValue::array(now, nobody, 0, 0), format},
      {QVValue::array(now, nobody, 0, 0, 2, 0), format},
      {peopleEvent(nobody, QVValue::array(1, 2, 3)), stamp},
      {peopleEvent(nobody, QVValue::array(1)), stamp},
      {peopleEvent(nobody, QVValue::array(1, 2.0f)), stamp},
      {peopleEvent(nobody, 1), stamp},
      {peopleEvent("nobody", QVValue()), stamp},
      {peopleEvent(QVValue()), format},
      {peopleEvent(nobody, now, "2"), format},
      {peopleEvent(QVValue::array(1.0f)), format},
      {peopleEvent(QVValue::array(QVValue::array(0, 1.0f, 0.0f))), format},
      {peopleEvent(QVValue::array(person("far", 0.0f, 0.0f))), format},
  };
  sut->onUpdatePeopleList("", crowd(1), "");
  for (const auto& [event, message] : cases) {
    log.clear();
    sut->onUpdatePeopleList("", event, "");
    EXPECT_THAT(log.lines(), ElementsAre(kPeopleError + "onUpdatePeopleList: " + message)) << event;
  }
  EXPECT_THAT(points(), SizeIs(1));
}

}  // namespace
}  // namespace QV::sensor
