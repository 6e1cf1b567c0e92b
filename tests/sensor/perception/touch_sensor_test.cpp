#include "sensor/perception/internal/touch_sensor.h"

#include <thread>

#include "tests/support/fake_robot.h"
#include "tests/support/fake_sensor.h"

namespace QV::sensor {
namespace {

const Math::SensorFieldOfView2D kTouchView(0.1f, 0.5f, 1.0f, 3);
const std::string kCategory = "Navigation.TouchSensor.";

QVValue touched(const char* group, const QVValue::Array& types) {
  return QVValue::array(group, true, types);
}
QVValue released(const char* group) {
  return QVValue::array(group, false);
}

struct TouchSensorTest : test::FakeRobotTest {
  TouchSensorTest() {
    navigation->bindMethod("_onTouchChanged", [this](const std::string& event, const QVValue& value,
                                                     const std::string& module) {
      if (sut) sut->onTouchChanged(event, value, module);
    });
    broker->registerModule(navigation);
    sut.emplace("Touch", "Touch", broker, kTouchView);
  }

  template <typename... E>
  void raise(const E&... entries) {
    memory.raiseEvent("TouchChanged", QVValue::array(entries...));
    time.runDue();
  }

  std::vector<std::string> touchedGroups() { return namesOf(readOf(*sut)); }

  boost::shared_ptr<QVModule> navigation = boost::make_shared<QVModule>("QVNavigation");
  std::optional<TouchSensor> sut;
};

TEST_F(TouchSensorTest, aTouchedGroupIsARecordWithAPointInItsFrame) {
  const auto place = test::tiltedFrame();
  motion->transform = place.toVector();
  raise(touched("FrontBumper", {2}));
  EXPECT_THAT(sut->getData(), IsEmpty());
  const std::vector<Math::Position3D> points{{-0.05f, 0.0f, 0.0f}};
  const auto now = ko::Clock::now();
  const Math::MetricalData expected{"FrontBumper", "Touch", kTouchView, place, points, now};
  EXPECT_THAT(readOf(*sut), ElementsAre(expected));
  EXPECT_THAT(broker->callsTo("QVMotion"), ElementsAre("getTransform[\"FrontBumper\", 1, true]"));
}

TEST_F(TouchSensorTest, aGroupWithoutATransformIsLeftOutWithoutALogLine) {
  raise(touched("A", {1}), touched("B", {1}), touched("C", {1}));
  int calls = 0;
  broker->plan("QVMotion.getTransform", [&] {
    ++calls;
    if (calls == 1) throw std::runtime_error("no such frame");
    if (calls == 2) throw 42;
  });
  EXPECT_THAT(touchedGroups(), ElementsAre("C"));
  EXPECT_THAT(touchedGroups(), ElementsAre("A", "B", "C"));
  motion->transform = std::vector<float>(11, 0.0f);
  EXPECT_THAT(touchedGroups(), IsEmpty());
  EXPECT_THAT(log.lines(), IsEmpty());
  broker->planFailure("DCM.getTime", "no clock");
  EXPECT_EQ(errorOf([&] { sut->getData(); }), "no clock");
}

TEST_F(TouchSensorTest, anEventThatComesDuringAReadingWaitsForItsEnd) {
  raise(touched("A", {1}), touched("B", {1}));
  std::thread releasing;
  broker->plan("QVMotion.getTransform", [&] {
    if (releasing.joinable()) return;
    releasing = std::thread(
        [&] { sut->onTouchChanged("", QVValue::array(released("A"), released("B")), ""); });
  });
  EXPECT_THAT(touchedGroups(), ElementsAre("A", "B"));
  releasing.join();
  EXPECT_THAT(touchedGroups(), IsEmpty());
}

TEST_F(TouchSensorTest, anEventInsideTheSleepOfAReadingChangesTheNextOne) {
  raise(touched("A", {1}), touched("B", {1}));
  broker->plan("QVMotion.getTransform", [] { ko::os::msleep(5); });
  memory.raiseEvent("TouchChanged",
                    QVValue::array(released("A"), released("B"), touched("C", {1})));
  EXPECT_THAT(touchedGroups(), ElementsAre("A", "B"));
  EXPECT_THAT(touchedGroups(), ElementsAre("C"));
}

}  // namespace
}  // namespace QV::sensor
