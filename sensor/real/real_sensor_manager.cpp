#include "sensor/real/real_sensor_manager.h"

#include <exception>

#include <boost/make_shared.hpp>
#include <boost/thread/lock_guard.hpp>

#include "platform/ko/log.h"
#include "platform/middleware/qv_error.h"
#include "platform/middleware/qv_proxy.h"
#include "platform/model/internal/number_text.h"
#include "platform/model/model_utils.h"
#include "platform/model/robot.h"
#include "sensor/perception/people_perception_sensor.h"
#include "sensor/perception/sensor_3d.h"
#include "sensor/perception/touch_sensor.h"
#include "sensor/range/blind_zone_sensor.h"
#include "sensor/range/hole_laser_sensor.h"
#include "sensor/range/laser_sensor.h"
#include "sensor/range/smart_sonar.h"
#include "sensor/range/sonar_sensor.h"
#include "sensor/real/sensor_family.h"
#include "sensor/utils/internal/truncated.h"

namespace QV::sensor {
namespace {

constexpr char kRealManagerCategory[] = "Navigation.RealSensorManager";

bool copyProperty(const std::map<std::string, std::string>& properties, const char* key,
                  std::string& value) {
  const auto found = properties.find(key);
  if (found == properties.end()) return false;
  value = found->second;
  return true;
}

}  // namespace

/** How the sensors of one type come to be, and what is logged before the reason if they don't. */
struct RealSensorManager::Factory {
  void (RealSensorManager::*create)(const Blueprint&);
  const char* error;
  /** What stands between the message and the line break: the configuration's name, or nothing. */
  bool namesConfig = false;

  static const Factory* find(int type) {
    typedef RealSensorManager M;
    static const std::map<int, Factory> factories = {
        {2, {&M::xCreateTouch, "Error while creating TouchSensor"}},
        {4, {&M::xCreateDepthCamera, "Error while creating Sensor3D"}},
        {8, {&M::xCreateLaser, "Error while creating LaserSensor"}},
        {9, {&M::xCreateSonar, "Unable to initialize ", true}},
        {14, {&M::xCreateBlindZone, "Error while creating BlindZoneSensor"}},
        {16, {&M::xCreateHoleLaser, "Error while creating LaserSensor"}},
        {17, {&M::xCreateLaser, "Error while creating LaserSensor"}},
    };
    const auto found = factories.find(type);
    return found == factories.end() ? nullptr : &found->second;
  }
};

RealSensorManager::RealSensorManager(boost::shared_ptr<QVBroker> broker) : broker(broker) {
  if (!broker) throw QVError("QVNavigation", "RealSensorManager", "a broker expected, none given");
  dcmPresent = broker->isModulePresent("DCM");
  xInit();
}

RealSensorManager::~RealSensorManager() {
  updateTask.stop();
}

void RealSensorManager::xInit() {
  if (!dcmPresent && !sensorsDebug) return;
  xInitSensors();
  dcmPresent = broker->isModulePresent("DCM");
  updateTask.setName("MetricalSensors");
  updateTask.setCallback([this] { xUpdateData(); });
  updateTask.setUsPeriod(std::int64_t{updatePeriodMs} * 1000);
}

void RealSensorManager::xInitSensors() {
  Model::Robot robot;
  try {
    robot = Model::ModelUtils::robotFromXml(
        broker->getProxy("QVRobotModel", 0)->call<std::string>("getConfig"));
  } catch (const std::exception& exception) {
    ko::log::error(kRealManagerCategory, "xInitSensors")
        << "QVRobotModel is not found. " << exception.what();
    return;
  }
  for (const auto& [name, config] : robot.sensorConfigs) {
    const Factory* factory = Factory::find(config.type);
    if (!factory) continue;
    xCreate(*factory,
            {robot, config, familyOfType(config.type), xParseProperties(config.properties)});
  }
}

void RealSensorManager::xCreate(const Factory& factory, const Blueprint& blueprint) {
  const std::string& name = blueprint.config.name;
  try {
    (this->*factory.create)(blueprint);
  } catch (const std::exception& exception) {
    xLogTrouble(name, kRealManagerCategory, "xInitSensors",
                factory.error + (factory.namesConfig ? name : "") + ": \n" + exception.what());
  }
}

// One touch sensor stands for all: those of later configurations are built and not kept.
void RealSensorManager::xCreateTouch(const Blueprint& blueprint) {
  if (xIsSensor(blueprint.config.name)) return;
  xAddSensor(boost::make_shared<TouchSensor>("Touch", "Touch", broker, blueprint.fieldOfView));
}

void RealSensorManager::xCreateDepthCamera(const Blueprint& blueprint) {
  if (xIsFamily(blueprint.family)) return;
  const auto camera = boost::make_shared<Sensor3D>(blueprint.config.name, blueprint.family, broker,
                                                   blueprint.fieldOfView);
  const auto people = boost::make_shared<PeoplePerceptionSensor>(
      "PeoplePerception", blueprint.family, blueprint.fieldOfView, std::vector<std::string>(),
      broker);
  xAddSensor(camera);
  xAddSensor(people);
}

void RealSensorManager::xCreateLaser(const Blueprint& blueprint) {
  const Model::SensorConfig& config = blueprint.config;
  std::string setOperationMode, getOperationMode, timestamp;
  int regIndex = 0;
  if (!xExtractLaserProperties(config.properties, setOperationMode, getOperationMode, regIndex,
                               timestamp)) {
    return xLogIncomplete(config.name);
  }
  ko::log::verbose(kRealManagerCategory, "xInitSensors") << "Horizontal laser:  " << config.name;
  xAddSensor(boost::make_shared<LaserSensor>(config.name, blueprint.family, blueprint.fieldOfView,
                                             broker, config.memoryKeys, regIndex, setOperationMode,
                                             getOperationMode, timestamp));
}

void RealSensorManager::xCreateSonar(const Blueprint& blueprint) {
  const Model::SensorConfig& config = blueprint.config;
  if (config.memoryKeys.empty()) return;
  if (blueprint.robot.kindCode == 0) {
    xAddSensor(boost::make_shared<SmartSonar>(config.name, blueprint.family, blueprint.fieldOfView,
                                              config.memoryKeys, broker, true));
  } else {
    xAddSensor(boost::make_shared<SonarSensor>(config.name, blueprint.family, blueprint.fieldOfView,
                                               config.memoryKeys, broker, false));
  }
}

void RealSensorManager::xCreateBlindZone(const Blueprint& blueprint) {
  xAddSensor(boost::make_shared<BlindZoneSensor>(blueprint.config.name, blueprint.family, broker,
                                                 blueprint.config.memoryKeys,
                                                 blueprint.fieldOfView));
}

void RealSensorManager::xCreateHoleLaser(const Blueprint& blueprint) {
  const Model::SensorConfig& config = blueprint.config;
  std::string setOperationMode, getOperationMode, timestamp, inclination, status;
  int regIndex = 0;
  if (!xExtractVerticalLaserProperties(config.properties, setOperationMode, getOperationMode,
                                       regIndex, timestamp, inclination, status)) {
    return xLogIncomplete(config.name);
  }
  ko::log::verbose(kRealManagerCategory, "xInitSensors") << "Hole laser: " << config.name;
  xAddSensor(boost::make_shared<HoleLaserSensor>(
      config.name, blueprint.family, blueprint.fieldOfView, broker, config.memoryKeys, regIndex,
      setOperationMode, getOperationMode, timestamp, inclination, status));
}

void RealSensorManager::xLogIncomplete(const std::string& name) const {
  xLogTrouble(name, kRealManagerCategory, "xInitSensors",
              "Unable to initialize sensor " + name + " because its model is incomplete.");
}

void RealSensorManager::xAddSensor(boost::shared_ptr<Sensor> sensor) {
  const std::string name = sensor->getName();
  const std::string family = sensor->getFamilyName();
  sensors.emplace(name, sensor);
  ko::log::verbose(kRealManagerCategory, "xAddSensor") << name << " - " << family;
  families[family].insert(name);
}

Math::SensorFieldOfView2D RealSensorManager::xParseProperties(const Properties& properties) const {
  const auto number = [&properties](const char* key) {
    std::string text;
    return copyProperty(properties, key, text) ? static_cast<float>(Model::atofC(text)) : 0.0f;
  };
  return Math::SensorFieldOfView2D(number("minimumDetectionDistance"),
                                   number("maximumDetectionDistance"),
                                   number("horizontalAngularRange"), 1);
}

bool RealSensorManager::xExtractLaserProperties(const Properties& properties,
                                                std::string& setOperationMode,
                                                std::string& getOperationMode, int& regIndex,
                                                std::string& timestamp) const {
  std::string text;
  if (!copyProperty(properties, "regIndex", text)) return false;
  regIndex = truncated(static_cast<float>(Model::atofC(text)));
  return copyProperty(properties, "setOperationMode", setOperationMode) &&
         copyProperty(properties, "getOperationMode", getOperationMode) &&
         copyProperty(properties, "timestamp", timestamp);
}

bool RealSensorManager::xExtractVerticalLaserProperties(
    const Properties& properties, std::string& setOperationMode, std::string& getOperationMode,
    int& regIndex, std::string& timestamp, std::string& inclination, std::string& status) const {
  return xExtractLaserProperties(properties, setOperationMode, getOperationMode, regIndex,
                                 timestamp) &&
         copyProperty(properties, "inclination", inclination) &&
         copyProperty(properties, "status", status);
}

void RealSensorManager::setSensorsDebug(bool debug) {
  sensorsDebug = debug;
  if (!debug) return;
  for (const auto& [name, sensor] : sensors) {
    if (!sensor->isEnabled()) sensor->enable(true);
  }
}

std::vector<Math::MetricalData> RealSensorManager::xGetData() const {
  return xCopyData();
}

void RealSensorManager::xOnSensorOnChanged(bool anySensorOn) {
  boost::lock_guard<boost::mutex> lock(updateMutex);
  if (anySensorOn == updateRunning) return;
  updateRunning = anySensorOn;
  if (anySensorOn) {
    updateTask.start(true);
  } else {
    updateTask.stop();
    xSetData({});
  }
}

}  // namespace QV::sensor
