#include "sensor/real/real_sensor_manager.h"

#include <algorithm>
#include <optional>

#include "robot/services/internal/laser_mode_actuator.h"
#include "robot/services/internal/robot_model_service.h"
#include "robot/services/video_device.h"
#include "sensor/perception/internal/touch_sensor.h"
#include "sensor/range/internal/smart_sonar.h"
#include "tests/support/fake_robot.h"
#include "tests/support/fake_sensor.h"

namespace QV::sensor {
namespace {

using Properties = std::map<std::string, std::string>;

const std::string kCategory = "Navigation.RealSensorManager.";
const std::string kTouchAdded = "verbose " + kCategory + "xAddSensor: Touch - Touch";
const Properties kLaser = {{"regIndex", "2.9"},
                           {"setOperationMode", "set"},
                           {"getOperationMode", "get"},
                           {"timestamp", "stamp"}};

std::string sensorElement(const std::string& name, int type, const Properties& properties = {},
                          const std::vector<std::string>& keys = {}) {
  std::ostringstream xml;
  xml << "<sensor name='" << name << "' type='" << type << "'>";
  for (const auto& [key, value] : properties)
    xml << "<property key='" << key << "' value='" << value << "'/>";
  for (const auto& key : keys) xml << "<memory_key>" << key << "</memory_key>";
  xml << "</sensor>";
  return xml.str();
}

std::string sonarElement(const std::string& name) {
  return sensorElement(name, 9, {{"maximumDetectionDistance", "2.5"}}, {name + "Key"});
}

Properties with(Properties properties, const Properties& more) {
  properties.insert(more.begin(), more.end());
  return properties;
}

struct RealSensorManagerTest : test::FakeRobotTest {
  RealSensorManagerTest() {
    const auto video = boost::make_shared<robot::VideoDevice>();
    video->addCamera({2, "DepthCamera", 7, 1.0f, 0.8f,
                      [](cv::Mat_<std::uint16_t>& depth, ko::Clock::time_point) { depth = 0; }});
    broker->registerModule(video);
    for (const char* key : {"FrontKey", "BackKey"}) memory.insertData(key, 1.5f);
  }

  /** The manager of a robot of kind 1, or another, with these sensors. */
  RealSensorManager& make(const std::string& sensors, int kind = 1) {
    sut.reset();
    if (broker->isModulePresent("QVRobotModel")) broker->unregisterModule("QVRobotModel");
    broker->registerModule(boost::make_shared<robot::RobotModelService>(
        "<robot name='r'><kind code='" + std::to_string(kind) + "'/><link name='base'/>" + sensors +
        "</robot>"));
    return sut.emplace(broker, factory);
  }

  std::vector<std::string> stampsOf(const std::string& name) {
    std::vector<std::string> result;
    for (const auto& record : sut->getMetricalData(name))
      result.push_back(std::to_string(record.timestamp.time_since_epoch().count() / 1000000));
    return result;
  }

  SensorFactory factory = SensorFactory::standard();
  std::optional<RealSensorManager> sut;
};

TEST_F(RealSensorManagerTest, groupsTheDescribedSensorsByFamily) {
  const Properties hole = with(kLaser, {{"inclination", "i"}, {"status", "s"}});
  make(sensorElement("Bumper", 2) + sensorElement("Bumper2", 2) + sensorElement("Camera1", 4) +
       sensorElement("Camera2", 4) + sensorElement("Laser1", 8, kLaser, {"x", "y"}) +
       sensorElement("Shovel1", 17, kLaser, {"x", "y"}) +
       sensorElement("Hole1", 16, hole, {"x", "y"}) + sonarElement("Front") +
       sensorElement("Mute", 9) + sensorElement("Zone", 14, {}, {"z"}) + sensorElement("Other", 7) +
       sensorElement("Future", 99));
  EXPECT_EQ(sut->getAllSensorsByFamily(),
            (std::map<std::string, std::set<std::string>>{{"Asus", {"Camera1", "PeoplePerception"}},
                                                          {"BlindZone", {"Zone"}},
                                                          {"HoleLaser", {"Hole1"}},
                                                          {"Laser", {"Laser1"}},
                                                          {"Shovel", {"Shovel1"}},
                                                          {"Sonar", {"Front"}},
                                                          {"Touch", {"Touch"}}}));
  EXPECT_THAT(log.lines(),
              AllOf(Contains("verbose " + kCategory + "xInitSensors: Horizontal laser:  Laser1"),
                    Contains("verbose " + kCategory + "xInitSensors: Horizontal laser:  Shovel1"),
                    Contains("verbose " + kCategory + "xInitSensors: Hole laser: Hole1"),
                    Contains("verbose " + kCategory + "xAddSensor: Front - Sonar"),
                    Not(Contains(HasSubstr("error ")))));
  EXPECT_EQ(std::ranges::count(log.lines(), kTouchAdded), 2) << "the second one is not kept";
}

TEST_F(RealSensorManagerTest, aTouchSensorNamedTouchIsBuiltOnceAndTheFirstOfOthersStays) {
  make(sensorElement("Bumper", 2) + sensorElement("Touch", 2));
  EXPECT_EQ(std::ranges::count(log.lines(), kTouchAdded), 1);
  make(sensorElement("Bumper", 2, {{"maximumDetectionDistance", "0.5"}}) +
       sensorElement("Skin", 2, {{"maximumDetectionDistance", "0.75"}}))
      .subscribe("me");
  const auto touch = boost::dynamic_pointer_cast<TouchSensor>(sut->getSensorPtr("Touch"));
  touch->onTouchChanged("", QVValue::array(QVValue::array("Left", true, QVValue::array(1))), "");
  EXPECT_EQ(touch->getData().at(0).fieldOfView.maxRange, 0.5f);
}

TEST_F(RealSensorManagerTest, eachSensorGetsItsNameFieldOfViewKeysAndBit) {
  const Properties properties = with(kLaser, {{"minimumDetectionDistance", "0.25"},
                                              {"maximumDetectionDistance", "3.5"},
                                              {"horizontalAngularRange", "1.5"},
                                              {"inclination", "tilt"},
                                              {"status", "state"}});
  struct Case {
    int type;
    const char* family;
    std::vector<std::string> keys;
    int rays;
    Math::Position3D middle;
  };
  const Case cases[] = {{8, "Laser", {"x", "y"}, 1, {0.5f, -1.25f, 0.0f}},
                        {16, "HoleLaser", {"x", "y"}, 1, {0.5f, -1.25f, 0.0f}},
                        {17, "Shovel", {"x", "y"}, 1, {0.5f, -1.25f, 0.0f}},
                        {9, "Sonar", {"range"}, 15, {0.75f, 0.0f, 0.0f}},
                        {14, "BlindZone", {"zone"}, 1, {0.25f, 0.0f, 0.0f}}};
  const std::pair<const char*, float> values[] = {
      {"x", 0.5f},      {"y", -1.25f},  {"range", 0.75f}, {"zone", 1.0f},
      {"stamp", 90.0f}, {"tilt", 0.0f}, {"state", 2.0f}};
  for (const auto& [key, value] : values) memory.insertData(key, value);
  const robot::LaserModeActuator mode(broker, devices, "set", "get", ko::Duration(0));
  for (const auto& [type, family, keys, rays, middle] : cases) {
    make(sensorElement("Front", type, properties, keys)).subscribe("me");
    const auto records = sut->getSensorPtr("Front")->getData();
    ASSERT_THAT(records, SizeIs(1)) << family;
    EXPECT_EQ(records[0].sensorName + records[0].familyName, std::string("Front") + family);
    EXPECT_EQ(records[0].fieldOfView, Math::SensorFieldOfView2D(0.25f, 3.5f, 1.5f, rays)) << family;
    ASSERT_THAT(records[0].points, SizeIs(rays));
    const Math::Position3D& point = records[0].points[records[0].points.size() / 2];
    EXPECT_NEAR(point.x, middle.x, 1e-6f) << family;
    EXPECT_NEAR(point.y, middle.y, 1e-6f) << family;
  }
  EXPECT_THAT(broker->callsTo("DCM"), Contains(HasSubstr(R"(["set", "ClearAll", [[2)")));
}

TEST_F(RealSensorManagerTest, sonarsTestForArmsOnlyOnARobotOfKind0) {
  for (int kind : {0, 1, 2}) {
    make(sonarElement("Front"), kind);
    const auto sonar = sut->getSensorPtr("Front");
    EXPECT_EQ(boost::dynamic_pointer_cast<SmartSonar>(sonar) != nullptr, kind == 0) << kind;
  }
}

TEST_F(RealSensorManagerTest, anIncompleteLaserIsLeftOutAndNamed) {
  for (const char* missing : {"regIndex", "setOperationMode", "getOperationMode", "timestamp"}) {
    Properties properties = kLaser;
    properties.erase(missing);
    for (int type : {8, 16, 17}) {
      log.clear();
      EXPECT_THAT(make(sensorElement("L", type, properties)).getSensorList(), IsEmpty());
      EXPECT_THAT(log.lines(), Contains("error " + kCategory +
                                        "xInitSensors: Unable to initialize sensor L because its "
                                        "model is incomplete."))
          << missing << type;
    }
  }
  const Properties flat = with(kLaser, {{"status", "s"}});
  make(sensorElement("A", 8, flat) + sensorElement("B", 16, flat));
  EXPECT_THAT(sut->getSensorList(), ElementsAre("A"));
}

TEST_F(RealSensorManagerTest, aSensorThatCantBeBuiltIsLoggedAndTheOthersAreBuilt) {
  broker->unregisterModule("QVVideoDevice");
  make(sensorElement("Camera", 4) + sensorElement("Twin", 9, {}, {"a", "b"}) +
       sensorElement("Zone", 14, {}, {"a", "b"}) + sonarElement("Front"));
  EXPECT_THAT(sut->getSensorList(), ElementsAre("Front"));
  const std::string error = "error " + kCategory + "xInitSensors: ";
  EXPECT_THAT(
      log.lines(),
      AllOf(Contains(testing::StartsWith(error + "Error while creating Sensor3D: \n")),
            Contains(error + "Unable to initialize Twin: \nWrong memory keys size for Twin. Given "
                             "2."),
            Contains(error + "Error while creating BlindZoneSensor: \nZone cannot be instantiated "
                             "with more than one key")));
  log.clear();
  broker->unregisterModule("QVMotion");
  make(sensorElement("Laser1", 8, kLaser, {"x", "y"}));
  EXPECT_THAT(log.lines(),
              Contains(testing::StartsWith(error + "Error while creating LaserSensor: \n")));
}

const Model::SensorKind kCliff = {40, "Cliff", "Cliff"};

TEST_F(RealSensorManagerTest, makesSensorsOfAUserDefinedKind) {
  factory.add(kCliff, [](const SensorOrder& order) -> SensorFactory::Sensors {
    if (order.manager.isFamily("Sonar") || !order.manager.isSensor("Early")) return {};
    return {boost::make_shared<test::FakeSensor>(order.config.memoryKeys.at(0), order.kind.family),
            boost::make_shared<test::FakeSensor>(
                std::to_string(order.kindCode) + "/" + std::to_string(order.fieldOfView.maxRange),
                order.kind.family)};
  });
  make(
      "<sensor name='Edge' type='Cliff'><property key='maximumDetectionDistance' value='0.5'/>"
      "<memory_key>edge</memory_key></sensor>" +
      sensorElement("Early", 14) + sonarElement("Front"));
  EXPECT_EQ(
      sut->getAllSensorsByFamily(),
      (std::map<std::string, std::set<std::string>>{
          {"BlindZone", {"Early"}}, {"Cliff", {"1/0.500000", "edge"}}, {"Sonar", {"Front"}}}));
  EXPECT_TRUE(sut->subscribe("me", "Cliff"));
  time.advance(milliseconds(1));
  EXPECT_EQ(namesOf(sut->getMetricalData()), (std::vector<std::string>{"1/0.500000", "edge"}));
}

TEST_F(RealSensorManagerTest, anErrorOfAUsersCreatorAffectsOnlyItsSensor) {
  factory.add(
      kCliff,
      [](const SensorOrder& order) -> SensorFactory::Sensors {
        if (order.config.name == "A") throw std::runtime_error("no edge");
        if (order.config.name == "B") return {boost::make_shared<test::FakeSensor>("B", "F"), {}};
        return {boost::make_shared<test::FakeSensor>("Front", "Cliff")};
      },
      "No cliff {name}");
  make(sensorElement("A", 40) + sensorElement("B", 40) + sensorElement("G", 40) +
       sonarElement("Front"));
  EXPECT_THAT(sut->getSensorList(), ElementsAre("Front"));
  EXPECT_EQ(sut->getSensorPtr("Front")->getFamilyName(), "Sonar");
  EXPECT_THAT(sut->getFamilyNames(), ElementsAre("Sonar"));
  const std::string error = "error " + kCategory + "xInitSensors: No cliff ";
  EXPECT_THAT(log.lines(),
              AllOf(Contains(error + "A: \nno edge"),
                    Contains(error + "B: \na sensor expected, the creator of kind \"Cliff\" gave "
                                     "none (null)"),
                    Contains(error + "G: \na name of its own expected, another sensor is called "
                                     "\"Front\"")));
}

TEST(SensorFactory, takesEachKindOnceAndOnlyWithACreator) {
  SensorFactory sut = SensorFactory::standard();
  const auto none = [](const SensorOrder&) { return SensorFactory::Sensors(); };
  EXPECT_THAT(errorOf([&] { sut.add({9, "Echo", "Echo"}, none); }), HasSubstr("9 given"));
  EXPECT_THAT(errorOf([&] { sut.add({40, "9", "Echo"}, none); }), HasSubstr("with a letter"));
  EXPECT_THAT(errorOf([&] { sut.add(kCliff, SensorFactory::Creator()); }),
              HasSubstr("sensor kind \"Cliff\": a creator expected, none given"));
  EXPECT_EQ(sut.getKinds().findName("Cliff"), nullptr);
}

TEST_F(RealSensorManagerTest, needsABroker) {
  EXPECT_THAT(errorOf([] { RealSensorManager(nullptr); }),
              HasSubstr("a broker expected, none given"));
}

TEST_F(RealSensorManagerTest, withoutADescriptionOrADeviceManagerThereAreNoSensors) {
  sut.emplace(broker);
  EXPECT_THAT(log.lines(),
              ElementsAre(testing::StartsWith("error " + kCategory +
                                              "xInitSensors: QVRobotModel is not found. ")));
  log.clear();
  make("<sensor name='x' type='9'>");
  EXPECT_THAT(log.lines(), SizeIs(1));
  EXPECT_FALSE(sut->subscribe("me", "Sonar"));

  broker->unregisterModule("DCM");
  EXPECT_THAT(make(sonarElement("Front")).getFamilyNames(), IsEmpty());
  EXPECT_FALSE(sut->subscribe("me"));
  EXPECT_THAT(sut->getMetricalData(), IsEmpty());
}

TEST_F(RealSensorManagerTest, readsAPropertyThatIsNoNumberAs0) {
  make(sensorElement("Front", 9,
                     {{"minimumDetectionDistance", "0.25 m"},
                      {"maximumDetectionDistance", "far"},
                      {"horizontalAngularRange", "0.5"},
                      {"colour", "7"}},
                     {"FrontKey"}));
  sut->subscribe("me");
  time.advance(milliseconds(1));
  const auto records = sut->getMetricalData();
  ASSERT_THAT(records, SizeIs(1));
  EXPECT_EQ(records[0].fieldOfView.minRange, 0.25f);
  EXPECT_EQ(records[0].fieldOfView.maxRange, 0.0f);
  EXPECT_EQ(records[0].fieldOfView.angularRange, 0.5f);
}

TEST_F(RealSensorManagerTest, refreshesAtOnceAndEvery100msWhileASensorIsStarted) {
  make(sonarElement("Front") + sonarElement("Back"));
  time.advance(milliseconds(50));
  EXPECT_THAT(broker->callsTo("QVMotion"), IsEmpty());
  sut->subscribe("me", "Front");
  time.advance(milliseconds(1));
  EXPECT_THAT(stampsOf("Sonar"), ElementsAre("150"));
  time.advance(milliseconds(98));
  EXPECT_THAT(stampsOf("Sonar"), ElementsAre("150"));
  sut->subscribe("me", "Back");  // The refresher runs already, and is left alone.
  time.advance(milliseconds(2));
  EXPECT_THAT(stampsOf("Sonar"), ElementsAre("250", "250"));

  sut->unsubscribe("me", "Front");
  time.advance(milliseconds(100));
  EXPECT_EQ(namesOf(sut->getMetricalData()), std::vector<std::string>{"Back"});
  sut->unsubscribe("me");
  EXPECT_THAT(sut->getMetricalData(), IsEmpty());
  const auto calls = broker->callsTo("QVMotion").size();
  time.advance(milliseconds(1000));
  EXPECT_THAT(broker->callsTo("QVMotion"), SizeIs(calls));
}

}  // namespace
}  // namespace QV::sensor
