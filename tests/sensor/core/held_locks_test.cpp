#include <atomic>
#include <latch>
#include <optional>
#include <ostream>
#include <string>
#include <thread>

#include "platform/ko/internal/event_loop.h"
#include "platform/middleware/qv_video_device_proxy.h"
#include "platform/model/model_utils.h"
#include "robot/services/internal/laser_mode_actuator.h"
#include "robot/services/internal/sonar_driver.h"
#include "robot/services/video_device.h"
#include "sensor/perception/internal/people_perception_sensor.h"
#include "sensor/perception/internal/touch_sensor.h"
#include "sensor/range/internal/laser_sensor.h"
#include "tests/support/fake_robot.h"
#include "tests/support/fake_sensor.h"

// No lock that is held over a call may stop a simulated world. Here each is held by a call that
// sleeps, and another call asks for it: inside that sleep, or beside it from the owner's thread.
namespace QV::sensor {
namespace {

const Math::SensorFieldOfView2D kView(0.1f, 2.0f, 1.0f, 1);

/** A device or a sensor for each lock; the first that is called sleeps for 10 ms. */
struct World : test::FakeRobotTest {
  void TestBody() override {}

  World() {
    for (const auto& sensor : {left, right}) {
      sensor->onStart = sensor->onStop = sensor->onRead = [this] { nap(); };
    }
    for (const char* call : {"QVMotion.getTransform", "DCM.getTime", "QVMemory.getData"}) {
      broker->plan(call, [this] { nap(); });
    }
    memory.insertData("mode", 0);
  }

  /** Sleeps if it is the first to be asked for since `mayNap`. */
  void nap() {
    if (mayNap.exchange(false)) ko::os::msleep(10);
  }
  boost::shared_ptr<robot::VideoDevice> addVideo() {
    const auto device = boost::make_shared<robot::VideoDevice>();
    device->addCamera({2, "Depth", 7, 1.0f, 0.8f, [this](auto& depth, auto&) {
                         nap();
                         depth = 1;
                       }});
    broker->registerModule(device);
    return device;
  }
  LaserSensor laser(const std::string& name, int mask) {
    return {name, "Laser", kView, broker, {"x", "y"}, mask, "modeActuator", "mode", "stamp"};
  }
  void takeImage(const std::string& client) {
    QVVideoDeviceProxy proxy(broker);
    proxy.getImageRemote(proxy.subscribeCamera(client, 2, 8, 17, 10));
  }
  void touch() {
    const QVValue groups = QVValue::array(QVValue::array("A", true, QVValue::array(1)));
    touchSensor.onTouchChanged("", groups, "");
  }
  void detectPeople() {
    const QVValue event =
        QVValue::array(QVValue::array(0, 100'000), QVValue::Array(), QVValue(), QVValue(), 2);
    peopleSensor.onUpdatePeopleList("", event, "");
  }

  std::atomic<bool> mayNap{false};
  test::FakeManager manager;
  const boost::shared_ptr<test::FakeSensor> left = manager.add("Left", "Sonar");
  const boost::shared_ptr<test::FakeSensor> right = manager.add("Right", "Sonar");
  const boost::shared_ptr<robot::VideoDevice> video = addVideo();
  robot::LaserModeActuator mode{broker, devices, "modeActuator", "mode", ko::Duration(0)};
  LaserSensor leftLaser = laser("Left", 1);
  LaserSensor rightLaser = laser("Right", 2);
  TouchSensor touchSensor{"Touch", "Touch", broker, kView};
  PeoplePerceptionSensor peopleSensor{"People", "Asus", kView, {}, broker};
};

struct Case {
  const char* what;
  void (*prepare)(World&);
  /** Sleeps while it holds the lock. */
  void (*holds)(World&);
  void (*asks)(World&);
  /** What the second gets inside the sleep of the first; empty if it is served. */
  const char* error;

  friend std::ostream& operator<<(std::ostream& stream, const Case& c) { return stream << c.what; }
};

void nothing(World&) {}
void startLeft(World& w) {
  w.left->subscribe("a");
}
void readLeft(World& w) {
  w.left->getData();
}
void disableLeft(World& w) {
  w.left->enable(false);
}
void subscribeLeft(World& w) {
  w.manager.subscribe("a", "Left");
}
void subscribeRight(World& w) {
  w.manager.subscribe("b", "Right");
}

const Case kCases[] = {
    {"a sensor's reading, for another", startLeft, readLeft, readLeft,
     "Sensor::getData of \"Left\" would wait for ever: on the same thread Sensor::getData of "
     "\"Left\" has not returned"},
    {"a sensor's reading, for a stop", startLeft, readLeft, disableLeft,
     "the stop of \"Left\" would wait for ever: on the same thread Sensor::getData of \"Left\" has "
     "not returned"},
    {"a sensor's reading, for its last subscriber", startLeft, readLeft,
     [](World& w) {
       const std::string error = errorOf([&] { w.left->unsubscribe("a"); });
       EXPECT_EQ(w.left->getSubscribers().empty(), error.empty()) << "a refusal changes nothing";
       if (!error.empty()) throw std::runtime_error(error);
     },
     "the stop of \"Left\" would wait for ever: on the same thread Sensor::getData of \"Left\" has "
     "not returned"},
    {"a sensor's start, for a subscriber", nothing, startLeft,
     [](World& w) { w.left->subscribe("b"); },
     "Sensor::subscribe of \"Left\" would wait for ever: on the same thread Sensor::subscribe of "
     "\"Left\" has not returned"},
    {"a sensor's stop, for a diagnosis", startLeft, disableLeft,
     [](World& w) { w.left->setDiagnosis(false); },
     "Sensor::setDiagnosis of \"Left\" would wait for ever: on the same thread Sensor::enable of "
     "\"Left\" has not returned"},
    {"a sensor's start, for its subscribers", nothing, startLeft,
     [](World& w) { EXPECT_THAT(w.left->getSubscribers(), ElementsAre("a")); }, ""},
    {"the manager's subscriptions, for another", nothing, subscribeLeft, subscribeRight,
     "subscribe of \"b\" would wait for ever: on the same thread subscribe of \"a\" has not "
     "returned"},
    {"the manager's subscriptions, for a look", nothing, subscribeLeft,
     [](World& w) { w.manager.lookAgain(); },
     "SensorManager::lookAgain would wait for ever: on the same thread subscribe of \"a\" has not "
     "returned"},
    {"a laser's mode, for one that shares it", nothing,
     [](World& w) { w.leftLaser.subscribe("a"); }, [](World& w) { w.rightLaser.subscribe("a"); },
     "the switching of \"Right\" would wait for ever: on the same thread the switching of \"Left\" "
     "has not returned"},
    {"a camera, for a second client", nothing, [](World& w) { w.takeImage("first"); },
     [](World& w) { w.takeImage("second"); },
     "QVVideoDevice::getImageRemote: the image of \"second_2\" would wait for ever: on the same "
     "thread the image of \"first_1\" has not returned"},
    {"touched groups, for an event",
     [](World& w) {
       w.touch();
       w.touchSensor.subscribe("a");
     },
     [](World& w) { w.touchSensor.getData(); }, [](World& w) { w.touch(); }, ""},
    {"the last people, for an event", [](World& w) { w.peopleSensor.subscribe("a"); },
     [](World& w) { w.peopleSensor.getData(); }, [](World& w) { w.detectPeople(); }, ""},
};

struct HeldLocks : testing::TestWithParam<Case> {
  World world;
};

TEST_P(HeldLocks, whoAsksInsideTheSleepOfAHolderIsServedOrToldBothEnds) {
  const Case& c = GetParam();
  c.prepare(world);
  std::string error = "never asked";
  ko::getEventLoop().asyncDelay([&] { error = errorOf([&] { c.asks(world); }); }, milliseconds(5));
  world.mayNap = true;
  c.holds(world);
  EXPECT_EQ(error, c.error);
  EXPECT_EQ(errorOf([&] { c.asks(world); }), "");
}

TEST_P(HeldLocks, anOwnerThatAsksLetsTheTimeGoOnUntilAnotherThreadWakesAndReleases) {
  const Case& c = GetParam();
  c.prepare(world);
  world.mayNap = true;
  std::thread other([&] { c.holds(world); });
  world.time.awaitSleepers(1);
  EXPECT_EQ(errorOf([&] { c.asks(world); }), "");
  world.time.advance(milliseconds(10));
  other.join();
}

INSTANTIATE_TEST_SUITE_P(EachLock, HeldLocks, testing::ValuesIn(kCases));

// Its task was started before the simulated time and sleeps in it on the pool.
TEST(SonarDriversLock, aSonarDriverThatAwaitsItsSleepingTaskTellsASubscriberSo) {
  const auto broker = test::brokerWithMemory();
  const auto robot = Model::ModelUtils::robotFromXml(
      "<robot name='r'><link name='body'/><sensor name='Left' type='9'>"
      "<memory_key>left</memory_key></sensor></robot>");
  const auto driver = boost::make_shared<robot::SonarDriver>(broker, robot);
  broker->registerModule(driver);
  const auto call = [sonars = QVProxy(broker, "QVSonar")](const char* method, const char* name) {
    sonars.callVoid(method, name);
  };
  std::latch simulated(1);
  driver->setSource([&](const auto&) -> std::optional<float> {
    simulated.wait();
    ko::os::msleep(10);
    return std::nullopt;
  });
  call("subscribe", "a");
  ko::SimulatedTime time;
  simulated.count_down();
  time.awaitSleepers(1);
  std::string error;
  ko::getEventLoop().asyncDelay([&] { error = errorOf([&] { call("subscribe", "b"); }); },
                                milliseconds(5));
  call("unsubscribe", "a");
  EXPECT_EQ(error,
            "QVSonar::subscribe: subscribe of \"b\" would wait for ever: on the same thread "
            "unsubscribe of \"a\" has not returned");
}

}  // namespace
}  // namespace QV::sensor
