#include <cmath>
#include <map>
#include <optional>
#include <set>

#include "sensor/perception/internal/people_perception_sensor.h"
#include "sensor/perception/internal/touch_sensor.h"
#include "tests/support/fake_robot.h"
#include "tests/support/model_check.h"

// Touches, people and the calls that a robot refuses, at random, beside a model of both sensors.
namespace QV::sensor::events_model {
namespace {

using test::textOf;

const std::string kPeopleCategory = "QVNavigation.PeoplePerceptionSensor.";
const Math::SensorFieldOfView2D kEventView(0.4f, 4.5f, 1.2f, 320);

/** Distance in metres, then two angles. From the third on they are no places. */
const float kPeople[][3] = {{2.0f, 0.5f, 0.25f},
                            {1.5f, -0.3f, 0.9f},
                            {kNan, 0.1f, 0.2f},
                            {1.0f, kInf, 0.1f},
                            {1.0f, 0.2f, -kInf}};
using People = std::vector<int>;

/** Tenths of a millimetre. */
std::string placeOf(float x, float y, float z) {
  return textOf(std::lround(x * 1e4f), std::lround(y * 1e4f), std::lround(z * 1e4f));
}

std::string headOf(const std::string& name, const char* family, const Math::Transform& frame,
                   std::int64_t nanoseconds) {
  return textOf(name, family, QVValue(frame.toVector()), nanoseconds);
}

QVValue listOf(const std::set<int>& numbers) {
  return std::vector<int>(numbers.begin(), numbers.end());
}

struct Group {
  std::string name;
  bool touched;
  std::set<int> types;
};

struct World : test::FakeRobotTest, test::LogWitness {
  World() {
    navigation->bindMethod("_onTouchChanged", [this](const std::string& event, const QVValue& value,
                                                     const std::string& module) {
      if (touch) touch->onTouchChanged(event, value, module);
    });
    navigation->bindMethod(
        "_onPeopleDetected",
        [this](const std::string& event, const QVValue& value, const std::string& message) {
          people.onUpdatePeopleList(event, value, message);
        });
    broker->registerModule(navigation);
    motion->transform = test::tiltedFrame().toVector();
    renew();
  }
  void TestBody() override {}

  boost::shared_ptr<QVModule> addVideo() {
    const auto video = boost::make_shared<QVModule>("QVVideoDevice");
    video->bindMethod("getCameraName", [](int index) {
      if (index != 2) throw std::runtime_error("no camera " + std::to_string(index));
      return "Depth";
    });
    broker->registerModule(video);
    return video;
  }

  void renew() {
    touch.reset();
    touch.emplace("Touch", "Touch", broker, kEventView);
    touch->subscribe("test");
  }
  void setType(int type, bool on) {
    if (!touch) return;
    on ? touch->enableTouchType(type) : touch->disableTouchType(type);
  }
  void raiseTouch(const std::vector<Group>& groups, bool wellFormed) {
    QVValue::Array event;
    for (const auto& [name, touched, types] : groups) {
      event.push_back(QVValue::array(name, touched, listOf(types)));
    }
    if (!wellFormed) event.push_back("touched");
    memory.raiseEvent("TouchChanged", event);
    time.runDue();
  }
  void raisePeople(const People& list, int second, int camera, bool wellFormed) {
    QVValue::Array seenPeople;
    for (const int i : list) {
      const auto& [distance, angleY, angleZ] = kPeople[i];
      seenPeople.push_back(QVValue::array(QVValue(), distance, angleY, angleZ));
    }
    if (!wellFormed) seenPeople.push_back("somebody");
    memory.raiseEvent(
        "PeoplePerception/PeopleDetected",
        QVValue::array(QVValue::array(second, 345678), seenPeople, QVValue(), QVValue(), camera));
    time.runDue();
  }
  void turnTouch(bool on) {
    if (touch) on ? touch->subscribe("test") : touch->unsubscribe("test");
  }
  void turnPeople(bool on) { on ? people.subscribe("test") : people.unsubscribe("test"); }
  void diagnosePeople() { people.setDiagnosis(true); }
  void refuse(const std::string& method) {
    if (!refused.empty()) broker->plan(refused, {});
    if (!method.empty()) broker->planFailure(method, "refused");
    refused = method;
  }
  void sleep(int ms) { time.advance(milliseconds(ms)); }

  void showState() {
    const auto show = [this](const Sensor& sensor) {
      for (const auto& record : sensor.getData()) {
        std::string line =
            headOf(record.sensorName, record.familyName.c_str(), record.sensorTransform,
                   record.timestamp.time_since_epoch().count());
        for (const auto& [x, y, z] : record.points) line += placeOf(x, y, z);
        see(line + (record.fieldOfView == kEventView ? "" : "wrong view"));
      }
    };
    if (touch) see(errorOf([&] { show(*touch); }) + listOf(types()).toText());
    see(errorOf([&] { show(people); }));
    see(textOf(people.isStarted(), people.isDiagnosisSucess()));
  }
  std::set<int> types() const {
    const auto list = touch->getEnabledTouchTypes();
    return {list.begin(), list.end()};
  }

  boost::shared_ptr<QVModule> navigation = boost::make_shared<QVModule>("QVNavigation");
  boost::shared_ptr<QVModule> video = addVideo();
  std::optional<TouchSensor> touch;
  PeoplePerceptionSensor people{"People", "Asus", kEventView, {}, broker};
  std::string refused;
};

struct Model : test::Witness {
  void renew() {
    isTouchOn = hasTouch = refused != "QVMemory.subscribeToEvent";
    touched.clear();
    types = {1, 2, 3};
    if (hasTouch) return;
    tell("error Navigation.TouchSensor.TouchSensor: Error while subscribing to TouchChanged");
    throw std::runtime_error("refused");
  }
  void setType(int type, bool on) {
    if (!hasTouch || (on ? types.insert(type).second : types.erase(type) > 0)) return;
    see(std::string("info Navigation.TouchSensor.") + (on ? "enable" : "disable") +
        "TouchType: Touch type " + std::to_string(type) + " already " +
        (on ? "enabled." : "disabled."));
  }
  void raiseTouch(const std::vector<Group>& groups, bool wellFormed) {
    if (!hasTouch) return;
    if (!wellFormed)
      return see("error Navigation.TouchSensor.onTouchChanged: Invalid touch extraction");
    for (const auto& group : groups) {
      if (!group.touched) touched.erase(group.name);
      for (const int type : group.types) {
        if (group.touched && types.contains(type)) touched.insert(group.name);
      }
    }
  }
  void raisePeople(const People& list, int second, int camera, bool wellFormed) {
    if (!heard) return;
    const std::string start = kPeopleCategory + "onUpdatePeopleList: ";
    if (!wellFormed) return see("error " + start + "Wrong peopleEvent format");
    const auto lost = std::ranges::count_if(list, [](int i) { return i >= 2; });
    if (lost > 0)
      see("warning " + start + std::to_string(lost) + " of " + std::to_string(list.size()) +
          " people left out: finite distances and angles expected");
    const std::string failure = "error " + start + "Unable to get transform";
    if (camera != 2)
      return see(failure + ": QVVideoDevice::getCameraName: no camera " + std::to_string(camera));
    if (refused == "QVMotion._getSensorTransformAtTime") return tell(failure);
    last = headOf("People", "Asus", test::tiltedFrame(), second * 1'000'000'000LL + 345'678'000);
    lastTime = now;
    for (const int i : list) {
      const auto& [distance, y, z] = kPeople[i];
      if (i >= 2) continue;
      last += placeOf(distance * std::cos(y) * std::cos(z), distance * std::cos(y) * std::sin(z),
                      -distance * std::sin(y));
    }
  }
  void turnTouch(bool on) { isTouchOn = on && hasTouch; }
  void turnPeople(bool on) {
    wanted = on;
    toggle();
  }
  void diagnosePeople() {
    if (!std::exchange(good, true)) toggle();
  }
  void toggle() {
    if ((wanted && good) == started) return;
    const std::string method = started ? "unsubscribeToMicroEvent" : "subscribeToMicroEvent";
    const bool fails = refused == "QVMemory." + method;
    const std::string what = started ? "xUnsubscribeFromHardware: Unable to unsubscribe from "
                                     : "xSubscribeToHardware: Unable to subscribe to ";
    if (fails) tell("error " + kPeopleCategory + what + "PeoplePerception/PeopleDetected");
    if (fails) good = false;
    if (!fails) heard = !started;
    started = !started && !fails;
  }
  void refuse(const std::string& method) { refused = method; }
  void sleep(int ms) { now += ms; }

  void tell(const std::string& line) { see(line + ": refused"); }
  void showState() {
    const bool hasClock = refused != "DCM.getTime";
    for (const auto& group : isTouchOn&& hasClock ? touched : std::set<std::string>()) {
      if (refused == "QVMotion.getTransform") continue;
      see(headOf(group, "Touch", test::tiltedFrame(), now * 1'000'000LL) +
          placeOf(-0.05f, 0.0f, 0.0f));
    }
    if (hasTouch)
      see((hasClock || !isTouchOn || touched.empty() ? "" : "refused") + listOf(types).toText());
    const bool isKnown = !last.empty() && now - lastTime < 2000;
    if (started && isKnown) see(last);
    if (started && !isKnown && hasClock) see(headOf("People", "Asus", {}, now * 1'000'000LL));
    see(started && !isKnown && !hasClock ? "refused" : "");
    see(textOf(started, good));
  }

  bool hasTouch = true;
  bool isTouchOn = true;
  std::set<std::string> touched;
  std::set<int> types{1, 2, 3};
  bool wanted = false, started = false, good = true, heard = false;
  std::string last, refused;
  int lastTime = 0;
  int now = 100;
};

test::AnyStep<Model, World> anyStep() {
  const int kind = *rc::gen::element(0, 1, 1, 2, 2, 2, 2, 3, 3, 3, 4, 4, 5, 6, 6, 7, 7, 8);
  const bool on = *rc::gen::arbitrary<bool>();
  const int type = *rc::gen::inRange(0, 8);
  std::vector<Group> groups;
  for (int count = *rc::gen::inRange(0, 4); count > 0; --count) {
    const auto types = *rc::gen::container<std::set<int>>(rc::gen::inRange(0, 8));
    groups.push_back({*rc::gen::element("A", "B", "C"), *rc::gen::inRange(0, 3) > 0, types});
  }
  const auto list =
      *rc::gen::container<People>(*rc::gen::inRange(0, 4), rc::gen::element(0, 0, 1, 1, 2, 3, 4));
  const int camera = *rc::gen::element(2, 2, 2, 3);
  const bool wellFormed = *rc::gen::inRange(0, 8) > 0;
  const std::string refused =
      *rc::gen::element("", "", "", "DCM.getTime", "QVMotion.getTransform",
                        "QVMotion._getSensorTransformAtTime", "QVMemory.subscribeToEvent",
                        "QVMemory.subscribeToMicroEvent", "QVMemory.unsubscribeToMicroEvent");
  const int ms = *rc::gen::element(1, 499, 1500, 2000);
  const auto run = [=](auto& w) {
    if (kind == 0) w.renew();
    if (kind == 1) w.setType(type, on);
    if (kind == 2) w.raiseTouch(groups, wellFormed);
    if (kind == 3) w.raisePeople(list, 12 + type, camera, wellFormed);
    if (kind == 4) w.turnPeople(on);
    if (kind == 5) w.diagnosePeople();
    if (kind == 6) w.refuse(refused);
    if (kind == 7) w.sleep(ms);
    if (kind == 8) w.turnTouch(on);
  };
  std::string text = textOf(kind, on, type, list.size(), camera, wellFormed, refused, ms);
  for (const auto& [name, touched, types] : groups) text += textOf(name, touched, listOf(types));
  return test::makeStep<Model, World>(text, run);
}

TEST(PushedEventsModel, touchesPeopleAndLogAreAsTheModelSays) {
  test::checkModel<Model, World>(anyStep, 130);
}

}  // namespace
}  // namespace QV::sensor::events_model
