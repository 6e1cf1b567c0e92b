#include "sensor/hosting/navigation_module.h"

#include <latch>
#include <thread>

#include "platform/ko/simulated_time.h"
#include "platform/middleware/qv_broker.h"
#include "platform/middleware/qv_memory_proxy.h"
#include "sensor/hosting/record_value.h"
#include "tests/support/fake_sensor.h"
#include "tests/support/log_capture.h"
#include "tests/support/porter.h"
#include "tests/support/vocabulary.h"

namespace QV::sensor {
namespace {

using Names = std::vector<std::string>;

struct NavigationModuleTest : testing::Test {
  void host() {
    sut = boost::make_shared<NavigationModule>(broker);
    hosting.emplace(broker, sut);
  }
  void letGo() {
    hosting.reset();
    sut.reset();
  }
  QVProxy navigation() { return QVProxy(broker, "QVNavigation"); }

  std::vector<Math::MetricalData> readThroughTheBroker(const QVValue& names) {
    time.advance(milliseconds(100));
    return recordsFromQVValue(navigation().call<QVValue>("getMetricalData", names));
  }

  std::string troubleOf(const std::string& sensor) const {
    const auto line = sut->getLastTrouble().get(sensor);
    return line ? line->message : "";
  }

  ko::SimulatedTime time;
  test::LogCapture log;
  boost::shared_ptr<QVBroker> broker = QVBroker::create();
  test::Porter porter{broker};
  boost::shared_ptr<NavigationModule> sut;
  std::optional<ScopedModule> hosting;
};

TEST_F(NavigationModuleTest, anotherModuleSubscribesAndReadsThroughTheBroker) {
  host();
  EXPECT_TRUE(navigation().call<bool>("subscribe", "planner", Names{"Sonar", "FrontLaser"}));
  EXPECT_TRUE(navigation().call<bool>("subscribe", "planner", "BlindZone"));
  const auto records = readThroughTheBroker(Names{"Laser", "Sonar"});
  EXPECT_EQ(records, sut->getManager().getMetricalData({"Laser", "Sonar"}));
  EXPECT_EQ(namesOf(records), (Names{"FrontLaser", "BackSonar", "FrontSonar"}));
  EXPECT_TRUE(navigation().call<bool>("isSensorStarted", "FrontSonar"));
  EXPECT_TRUE(navigation().call<bool>("unsubscribe", "planner", Names{"Sonar", "BlindZone"}));
  EXPECT_TRUE(navigation().call<bool>("unsubscribeFromAll", "planner"));
  EXPECT_THAT(navigation().call<Names>("getSubscribers"), IsEmpty());
}

TEST_F(NavigationModuleTest, givesTheAnswersOfItsManager) {
  host();
  const QVProxy sensors = navigation();
  sensors.call<bool>("subscribeToAll", "planner");
  sensors.call<bool>("subscribe", "me", "Touch");
  EXPECT_TRUE(sensors.call<bool>("enableSensorOrFamily", "Sonar", false));
  EXPECT_TRUE(sensors.call<bool>("setSensorDiagnosis", "HoleLaser", false));
  sensors.callVoid("setSensorsDebug", false);
  EXPECT_FALSE(sensors.call<bool>("isSensorEnabled", "BackSonar"));
  EXPECT_FALSE(sensors.call<bool>("isSensorDiagnosisSuccess", "HoleLaser"));
  EXPECT_THAT(
      sensors.call<QVValue>("getHealth", "HoleLaser").toText(),
      AllOf(StartsWith("[\"failing\", \"its diagnosis is bad\", \"set its diagnosis to good "),
            testing::EndsWith("000000, 1]")));
  EXPECT_EQ(sensors.call<QVValue>("getHealth", "Nobody").toText(), "[]");
  EXPECT_TRUE(sensors.call<bool>("isSensorSubscribedBy", "Touch", "me"));
  EXPECT_TRUE(sensors.call<bool>("isFamily", "Laser") && !sensors.call<bool>("isSensor", "Laser"));
  EXPECT_THAT(sensors.call<Names>("getSensorListBySubscriber", "me"), ElementsAre("Touch"));
  EXPECT_THAT(sensors.call<Names>("getSensorsByFamily", "Asus"),
              ElementsAre("DepthCamera", "PeoplePerception"));
  EXPECT_EQ(sensors.call<QVValue>("getAllSensorsByFamily").toArray().at(6).toText(),
            "[\"Touch\", [\"Touch\"]]");
  const auto enabled = sut->getManager().getEnabledSensorList();
  EXPECT_EQ(sensors.call<Names>("getEnabledSensorList"), Names(enabled.begin(), enabled.end()));
  EXPECT_THAT(sensors.call<Names>("getFamilyNames"), SizeIs(7));
  EXPECT_THAT(sensors.call<Names>("getSensorList"), SizeIs(11));
  EXPECT_EQ(sensors.call<float>("getKindParameter"), 0.0f);
  sensors.callVoid("setSensorsDebug", true);
  sensors.callVoid("setSensorsDebug", false);
  EXPECT_TRUE(sensors.call<bool>("isSensorEnabled", "BackSonar"));
  time.advance(milliseconds(100));
  EXPECT_EQ(recordsFromQVValue(sensors.call<QVValue>("getAllMetricalData")),
            sut->getManager().getMetricalData());
  QVMemoryProxy(broker).raiseEvent("PeoplePerception/PeopleDetected", 7);
  time.runDue();
  EXPECT_NE(troubleOf("PeoplePerception"), "");
}

TEST_F(NavigationModuleTest, refusesArgumentsThatAreNoNames) {
  host();
  EXPECT_THAT(errorOf([&] { navigation().call<bool>("subscribe", "planner", 7); }),
              HasSubstr("array expected, int given"));
  EXPECT_THAT(errorOf([&] { navigation().callVoid("getMetricalData", QVValue::array("a", 7)); }),
              HasSubstr("string expected, int given"));
  EXPECT_THAT(errorOf([] { NavigationModule(boost::shared_ptr<SensorManager>()); }),
              HasSubstr("no manager given"));
}

TEST_F(NavigationModuleTest, theDestructorStopsAllHardwareAndReleasesTheBroker) {
  const auto others = broker.use_count();
  host();
  navigation().callVoid("subscribeToAll", "planner");
  navigation().callVoid("subscribe", "me", "Laser");
  EXPECT_THAT(porter.cameraHandles(), SizeIs(1));
  EXPECT_TRUE(porter.isLaserOn("FrontLaser"));
  letGo();
  EXPECT_FALSE(broker->isModulePresent("QVNavigation"));
  EXPECT_THAT(porter.cameraHandles(), IsEmpty());
  EXPECT_FALSE(porter.isLaserOn("FrontLaser"));
  EXPECT_EQ(broker.use_count(), others);
}

TEST_F(NavigationModuleTest, endsWhileOthersCallIt) {
  host();
  std::latch calling(2);
  const auto callUntilItIsGone = [&](const std::string& subscriber) {
    const QVProxy sensors = navigation();
    calling.count_down();
    EXPECT_THAT(errorOf([&] {
                  for (;;) {
                    sensors.callVoid("subscribe", subscriber, "Sonar");
                    sensors.callVoid("getMetricalData", "Sonar");
                  }
                }),
                HasSubstr("no such module"));
  };
  std::thread callers[] = {std::thread(callUntilItIsGone, "a"),
                           std::thread(callUntilItIsGone, "b")};
  calling.wait();
  letGo();
  for (auto& caller : callers) caller.join();
}

TEST_F(NavigationModuleTest, keepsEachSensorsLastErrorWhateverTheLogLevel) {
  const char* const categories[] = {"Navigation.RealSensorManager", "Navigation.SonarSensor",
                                    "Navigation.TouchSensor"};
  for (const char* category : categories) ko::log::setLevel(category, ko::log::Level::silent);
  broker->unregisterModule("QVVideoDevice");
  host();
  EXPECT_THAT(troubleOf("DepthCamera"), HasSubstr("Error while creating Sensor3D: \n"));
  broker->unregisterModule("QVSonar");
  time.advance(milliseconds(5));
  navigation().callVoid("subscribeToAll", "planner");
  EXPECT_EQ(troubleOf("FrontLaser"), "");
  const QVValue trouble = navigation().call<QVValue>("lastTrouble", "FrontSonar");
  EXPECT_EQ(trouble[0], QVValue("warning"));
  EXPECT_THAT(trouble[1].toString(), HasSubstr("Unable to reach QVSonar module: \n"));
  EXPECT_GE(trouble[2].as<ko::Duration>(), milliseconds(5));
  EXPECT_EQ(navigation().call<QVValue>("lastTrouble", "FrontLaser"), QVValue(QVValue::Array()));

  QVMemoryProxy(broker).raiseEvent("TouchChanged", 7);
  time.runDue();
  EXPECT_EQ(troubleOf("Touch"), "Invalid touch extraction");
  for (const char* category : categories) ko::log::resetLevel(category);
}

/** A manager that notes the poses it is given. */
class PosedManager : public test::FakeManager {
 public:
  explicit PosedManager(std::vector<Math::Pose2D>& poses) : poses(poses) {}
  void setPose2D(const Math::Pose2D& scan, const Math::Pose2D& reference) override {
    poses = {scan, reference};
  }

 private:
  std::vector<Math::Pose2D>& poses;
};

TEST_F(NavigationModuleTest, hostsAManagerOfAnyKind) {
  std::vector<Math::Pose2D> poses;
  auto manager = boost::make_shared<PosedManager>(poses);
  const auto radar = manager->add("Radar", "Radars");
  radar->onStop = [] { throw std::runtime_error("stuck"); };
  sut = boost::make_shared<NavigationModule>(manager);
  hosting.emplace(broker, sut);
  navigation().callVoid("setPose2D", std::vector<float>{1, 2, 3}, std::vector<float>{4, 5, 6});
  EXPECT_THAT(poses, ElementsAre(Math::Pose2D(1, 2, 3), Math::Pose2D(4, 5, 6)));
  navigation().callVoid("_onTouchChanged", "TouchChanged", QVValue(), "");
  navigation().callVoid("_onPeopleDetected", "PeopleDetected", QVValue(), "");
  navigation().callVoid("lookAgain");
  EXPECT_THAT(manager->anySensorOn, ElementsAre(false));
  EXPECT_TRUE(navigation().call<bool>("subscribe", "planner", "Radars"));
  EXPECT_EQ(readThroughTheBroker("Radar"), radar->getData());

  radar->onRead = [] { throw std::runtime_error("no echo"); };
  EXPECT_THAT(readThroughTheBroker("Radar"), IsEmpty());
  EXPECT_EQ(troubleOf("Radar"), "Unable to gather the data of Radar: no echo");
  letGo();
  EXPECT_FALSE(radar->isStarted());
}

TEST(RecordValue, refusesAMalformedRecordAndNamesTheElement) {
  const QVValue good = toQVValue(Math::MetricalData());
  const auto with = [&good](std::size_t index, const QVValue& value) {
    QVValue::Array elements = good.toArray();
    elements.at(index) = value;
    return errorOf([&] { recordsFromQVValue(QVValue::array(QVValue(elements))); });
  };
  EXPECT_EQ(recordFromQVValue(good), Math::MetricalData());
  EXPECT_THAT(errorOf([] { recordFromQVValue(QVValue::array(1)); }),
              HasSubstr("a record of 6 elements expected, [1] given"));
  EXPECT_THAT(with(1, 7), HasSubstr("element 1, the family's name: "));
  EXPECT_THAT(with(2, QVValue::array(1)), HasSubstr("element 2, the field of view: "));
  EXPECT_THAT(with(3, QVValue::array(1)), HasSubstr("element 3, the transform: "));
  EXPECT_THAT(with(4, QVValue::Bytes(13)),
              HasSubstr("element 4, the points: 12 bytes a point expected, 13 given"));
  EXPECT_THAT(with(5, 1.5f), HasSubstr("element 5, the timestamp: "));
}

}  // namespace
}  // namespace QV::sensor
