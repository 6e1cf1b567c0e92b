#include <algorithm>
#include <optional>
#include <thread>

#include "platform/ko/clock.h"
#include "platform/ko/simulated_time.h"
#include "platform/middleware/qv_broker.h"
#include "platform/vision/qv_image.h"
#include "sensor/hosting/navigation_module.h"
#include "tests/support/log_capture.h"
#include "tests/support/meddling_broker.h"
#include "tests/support/porter.h"
#include "tests/support/vocabulary.h"

namespace QV {
namespace {

using test::MeddlingBroker;

using Names = std::set<std::string>;

const Names kAllSensors{"BackSonar",  "BlindZone",   "DepthCamera", "FrontLaser",
                        "FrontSonar", "HoleLaser",   "LeftLaser",   "PeoplePerception",
                        "RightLaser", "ShovelLaser", "Touch"};

// Every call would take minutes; cycles have another number of calls than the stride, so each kind
// of call has its turn. A sanitizer makes a life many times longer.
#if defined(__SANITIZE_THREAD__)
constexpr int kStride = 83;
#elif defined(__SANITIZE_ADDRESS__)
constexpr int kStride = 127;
#else
constexpr int kStride = 23;
#endif

// Two points tell as much as the rest, and each costs two calls a cycle.
std::string withoutKeysOfPoint(std::string xml, const std::string& number) {
  const std::string end = "</memory_key>";
  for (auto at = xml.find("/Point" + number); at != std::string::npos;
       at = xml.find("/Point" + number)) {
    const auto from = xml.rfind("<memory_key>", at);
    xml.erase(from, xml.find(end, at) + end.size() - from);
  }
  return xml;
}

const robot::RobotDescription& withShortScans() {
  static const robot::RobotDescription result = [] {
    std::string xml = test::Porter::describe().xml;
    for (const char* number :
         {"02", "03", "04", "05", "06", "07", "08", "09", "10", "11", "12", "13", "14"}) {
      xml = withoutKeysOfPoint(xml, number);
    }
    return robot::RobotDescription(xml);
  }();
  return result;
}

/** A video device with a small picture of a wall, in place of a rendered world. */
class SmallVideoDevice : public QVModule {
 public:
  SmallVideoDevice() : QVModule("QVVideoDevice") {
    for (const char* method : {"getCameraModel", "getHorizontalFOV", "getVerticalFOV"}) {
      bindMethod(method, [](int) { return 1; });
    }
    bindMethod("getCameraName", [](int) { return "camera"; });
    bindMethod("subscribeCamera", [this](const std::string& client, int, int, int, int) {
      handles.insert(client + std::to_string(++count));
      return client + std::to_string(count);
    });
    bindMethod("unsubscribe", [this](const std::string& handle) { handles.erase(handle); });
    bindMethod("getHandles", [this] { return QVValue::Array(handles.begin(), handles.end()); });
    bindMethod("releaseImage", [](const std::string&) {});
    bindMethod("getImageRemote", [](const std::string&) {
      return QVImage(40, 30, kDepthColorSpace, ko::Clock::now().time_since_epoch().count() / 1000,
                     wall)
          .toQVValue();
    });
  }

 private:
  static inline const auto wall = std::make_shared<const QVValue::Bytes>(2400, 5);
  Names handles;
  int count = 0;
};

/** The life of a navigation module with a robot, one call of which is meddled with. */
class Scenario {
 public:
  Scenario(int number, MeddlingBroker::Meddling how) {
    broker->unregisterModule("QVVideoDevice");
    broker->registerModule(boost::make_shared<SmallVideoDevice>());
    platform->meddleWith(number, std::move(how));
  }
  ~Scenario() {
    hosting.reset();
    module.reset();
  }

  void run() {
    start();
    subscribe();
    readCycles();
    disableAndEnable();
    failAndRecover();
    unsubscribe();
    destroy();
  }
  bool wasMeddledWith() const { return platform->hasMeddled(); }

  /** Does what never waits for hardware. */
  void read() {
    if (!module) return;
    manager().getMetricalData();
    manager().getMetricalData({"Laser", "BackSonar"});
    manager().getEnabledSensorList();
    manager().isSensorStarted("FrontLaser");
  }

  test::LogCapture log;

 private:
  sensor::SensorManager& manager() { return module->getManager(); }

  void start() {
    host();
    if (manager().getSensorList() == kAllSensors) return;
    EXPECT_TRUE(wasMeddledWith());
    hosting.reset();
    module.reset();
    host();
    EXPECT_EQ(manager().getSensorList(), kAllSensors);
  }

  void host() {
    module = boost::make_shared<sensor::NavigationModule>(platform);
    hosting.emplace(broker, module);
  }

  void subscribe() {
    porter.leanBack();
    EXPECT_TRUE(manager().subscribe("me"));
    repair("subscribing");
  }

  void readCycles() {
    for (int cycle = 0; cycle < 20; ++cycle) {
      time.advance(milliseconds(100));
      EXPECT_GE(measured().size() + (wasMeddledWith() ? 1 : 0), kAllSensors.size());
    }
    checkHardware("reading");
    expectAllMeasured();
  }

  void disableAndEnable() {
    for (const auto& family : manager().getFamilyNames()) {
      EXPECT_TRUE(manager().enableSensorOrFamily(family, false));
    }
    expectAllStopped();
    for (const auto& name : kAllSensors) EXPECT_TRUE(manager().enableSensorOrFamily(name, true));
    repair("enabling");
  }

  void failAndRecover() {
    for (const auto& name : kAllSensors) EXPECT_TRUE(manager().setSensorDiagnosis(name, false));
    expectAllStopped();
    for (const auto& name : kAllSensors) EXPECT_TRUE(manager().setSensorDiagnosis(name, true));
    repair("setting the diagnosis to good");
    expectAllMeasured();
  }

  void unsubscribe() {
    EXPECT_TRUE(manager().unsubscribe("me"));
    expectAllStopped();
    EXPECT_THAT(manager().getMetricalData(), IsEmpty());
  }

  void destroy() {
    manager().subscribe("me");
    hosting.reset();
    module.reset();
    EXPECT_EQ(platform.use_count(), 1);
    time.advance(milliseconds(1000));
  }

  void repair(const char* after) {
    checkHardware(after);
    for (const auto& name : kAllSensors) {
      if (!manager().isSensorDiagnosisSuccess(name)) {
        EXPECT_TRUE(wasMeddledWith()) << name << " failed by itself after " << after;
        manager().setSensorDiagnosis(name, true);
      }
    }
    manager().lookAgain();
    checkHardware("a repair");
    for (const auto& name : kAllSensors) {
      EXPECT_TRUE(manager().isSensorStarted(name)) << name << " after " << after;
    }
  }

  /** No sensor says that it is started while its hardware is not. */
  void checkHardware(const char* after) {
    for (const auto& name : kAllSensors) {
      EXPECT_TRUE(!manager().isSensorStarted(name) || isHardwareOn(name))
          << name << " after " << after;
    }
  }

  bool isHardwareOn(const std::string& name) const {
    if (porter.isLaser(name)) return porter.isLaserOn(name);
    if (name.ends_with("Sonar")) return platform->countSubscriptions("QVSonar", name) > 0;
    if (name == "DepthCamera") return !porter.cameraHandles().empty();
    if (name == "Touch") return platform->countSubscriptions("QVMemory", "TouchChanged") > 0;
    if (name != "PeoplePerception") return true;
    return platform->countSubscriptions("QVMemory", "PeoplePerception/PeopleDetected") > 0;
  }

  void expectAllStopped() {
    for (const auto& name : kAllSensors) EXPECT_FALSE(manager().isSensorStarted(name)) << name;
  }

  void expectAllMeasured() {
    time.advance(milliseconds(200));
    // A further refresh runs if the last one was disturbed.
    if (measured() != kAllSensors) time.advance(milliseconds(100));
    EXPECT_EQ(measured(), kAllSensors);
  }

  Names measured() {
    Names names;
    for (const auto& record : manager().getMetricalData()) {
      names.insert(record.familyName == "Touch" ? "Touch" : record.sensorName);
    }
    return names;
  }

  ko::SimulatedTime time;
  boost::shared_ptr<QVBroker> broker = QVBroker::create();
  test::Porter porter{broker, withShortScans()};
  boost::shared_ptr<MeddlingBroker> platform = boost::make_shared<MeddlingBroker>(broker);
  boost::shared_ptr<sensor::NavigationModule> module;
  std::optional<ScopedModule> hosting;
};

/** The lines that may be logged when a call fails: one that holds one of these texts, or none. */
const std::map<std::string, std::vector<std::string>> kLines{
    {"isModulePresent",
     {"Error while creating ", "Unable to initialize ", "QVRobotModel is not found. ",
      "Unable to reach QVSonar module: "}},
    {"QVRobotModel.getConfig", {"QVRobotModel is not found. ", "Unable to initialize "}},
    {"QVMemory.subscribeToEvent",
     {"Error while subscribing to TouchChanged: ", "Error while creating TouchSensor: "}},
    {"QVMemory.declareEvent", {"Unable to declare event Navigation/MotionDetected"}},
    {"QVMemory.raiseEvent", {"Unable to raise Navigation/MotionDetected: "}},
    {"QVMemory.subscribeToMicroEvent", {"Unable to subscribe to PeoplePerception/"}},
    {"QVMemory.unsubscribeToMicroEvent",
     {"Unable to unsubscribe from PeoplePerception/", "_onPeopleDetected: no such module"}},
    {"QVMemory.getData",
     {"Unable to get operation mode for ", "unable to retrieve data: ", "Invalid hole data for "}},
    {"DCM.getTime", {"Unable to gather the data of ", "Unable to set operation mode for "}},
    {"DCM.set", {"Unable to set operation mode for "}},
    {"QVMotion.getTransform",
     {"Unable to gather the data of ", "Unable to retrieve transform: ", "Unable to initialize "}},
    {"QVMotion.getRobotVelocity", {"Unable to retrieve transform: "}},
    {"QVMotion._getSensorTransformAtTime",
     {"SonarSensor.xGetData: QVMotion::", "Unable to get transform",
      "Error while getting tf: ", "Invalid hole data for "}},
    {"QVSonar.subscribe", {"Unable to reach QVSonar module: "}},
    {"QVSonar.unsubscribe", {"Unable to reach QVSonar module: "}},
    {"QVVideoDevice.getCameraModel", {"Error while creating Sensor3D: "}},
    {"QVVideoDevice.getCameraName", {"Unable to get transform: "}},
    {"QVVideoDevice.subscribeCamera", {"Could not subscribe to QVVideoDevice: "}},
    {"QVVideoDevice.unsubscribe", {"Could not unsubscribe from QVVideoDevice: "}},
    {"QVVideoDevice.getImageRemote", {"Error while getting new 3D image: "}},
    {"QVVideoDevice.releaseImage", {"Error while releasing 3D image: "}}};

/** The warnings, but for those of health, which judges what the scenario does. */
std::vector<std::string> warningsIn(const test::LogCapture& log) {
  auto lines = log.lines(ko::log::Level::warning);
  std::erase_if(lines, [](const std::string& line) {
    return line.find("Navigation.SensorHealth") != std::string::npos;
  });
  return lines;
}

void expectItsLinesOnly(const test::LogCapture& log, const std::string& call) {
  const auto texts = kLines.find(call.substr(0, call.find(' ')));
  ASSERT_NE(texts, kLines.end()) << call;
  for (const std::string& line : warningsIn(log)) {
    const bool isOne =
        std::any_of(texts->second.begin(), texts->second.end(),
                    [&](const auto& text) { return line.find(text) != std::string::npos; });
    EXPECT_TRUE(isOne) << call << " failed: " << line;
  }
}

TEST(MeddledCalls, aFailingModuleCallAffectsOnlyItsSensorAndRecovers) {
  for (int number = 1; !HasFailure(); number += kStride) {
    std::string failed;
    Scenario sut(number, [&failed](const std::string& call) {
      failed = call;
      return true;
    });
    SCOPED_TRACE(number);
    sut.run();
    if (!sut.wasMeddledWith()) return;
    expectItsLinesOnly(sut.log, failed);
  }
}

TEST(MeddledCalls, aReaderOfTheCacheNeverWaitsForASlowCall) {
  for (int number = 1; !HasFailure(); number += kStride) {
    Scenario sut(number, [&sut](const std::string&) {
      std::thread reader([&sut] { sut.read(); });
      reader.join();
      ko::os::msleep(200);
      return false;
    });
    SCOPED_TRACE(number);
    sut.run();
    // Events may come after the module has gone, and before it has unsubscribed.
    EXPECT_THAT(
        warningsIn(sut.log),
        testing::Each(testing::HasSubstr("QVNavigation::_onPeopleDetected: no such module")));
    if (!sut.wasMeddledWith()) return;
  }
}

}  // namespace
}  // namespace QV
