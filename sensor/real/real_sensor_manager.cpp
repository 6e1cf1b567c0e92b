#include "sensor/real/real_sensor_manager.h"

#include <algorithm>
#include <exception>
#include <utility>

#include <boost/thread/lock_guard.hpp>

#include "platform/ko/log.h"
#include "platform/middleware/contracts/device_manager_contract.h"
#include "platform/middleware/contracts/navigation_contract.h"
#include "platform/middleware/contracts/robot_model_contract.h"
#include "platform/middleware/dcm_proxy.h"
#include "platform/middleware/qv_error.h"
#include "platform/middleware/qv_motion_proxy.h"
#include "platform/middleware/qv_proxy.h"
#include "platform/model/model_utils.h"
#include "platform/model/robot.h"
#include "platform/model/sensor_properties.h"
#include "sensor/core/internal/health_board.h"
#include "sensor/core/internal/health_rule_text.h"

namespace QV::sensor {
namespace {

constexpr char kRealManagerCategory[] = "Navigation.RealSensorManager";

// Of two of ours by one name the first stays, without a word.
bool isOurs(const Model::SensorKind& kind) {
  return Model::SensorKinds::standard().findType(kind.type) != nullptr;
}

/** Returns the period of the description, if it gives one that makes sense. */
ko::Duration periodOf(const Model::SensorProperties& properties, const Model::SensorKind& kind) {
  const Model::PropertyRule* rule = kind.findProperty("period");
  const double seconds = properties.getNumber("period");
  if (!rule || !(seconds >= rule->least && seconds <= rule->most)) return kind.period;
  return boost::chrono::duration_cast<ko::Duration>(boost::chrono::duration<double>(seconds));
}

}  // namespace

RealSensorManager::RealSensorManager(boost::shared_ptr<QVBroker> broker)
    : RealSensorManager(std::move(broker), SensorFactory::standard()) {}

RealSensorManager::RealSensorManager(boost::shared_ptr<QVBroker> robot, SensorFactory makes)
    : broker(std::move(robot)), factory(std::move(makes)) {
  if (!broker)
    throw QVError(NavigationContract::kModule, "RealSensorManager",
                  "a broker expected, none given");
  dcmPresent = broker->isModulePresent(DeviceManagerContract::kModule);
  xInit();
}

RealSensorManager::~RealSensorManager() {
  healthTask.stop();
  updateTask.stop();
}

void RealSensorManager::xInit() {
  if (!dcmPresent && !sensorsDebug) return;
  xInitSensors();
  dcmPresent = broker->isModulePresent(DeviceManagerContract::kModule);
  updateTask.setName("MetricalSensors");
  updateTask.setCallback([this] { xRefresh(); });
  updateTask.setUsPeriod(std::int64_t{updatePeriodMs} * 1000);
  healthTask.setName("SensorHealth");
  healthTask.setCallback([this] { xLookAtHealth(); });
  healthTask.setUsPeriod(std::int64_t{healthPeriodMs} * 1000);
  healthTask.compensateCallbackTime(true);
}

void RealSensorManager::xInitSensors() {
  Model::Robot robot;
  try {
    robot = Model::ModelUtils::robotFromXml(broker->getProxy(RobotModelContract::kModule, 0)
                                                ->call<std::string>(RobotModelContract::kGetConfig),
                                            factory.getKinds());
  } catch (const std::exception& exception) {
    ko::log::error(kRealManagerCategory, "xInitSensors")
        << "QVRobotModel is not found. " << exception.what();
    return;
  }
  for (const auto& [name, config] : robot.sensorConfigs) {
    const Model::SensorKind* kind = factory.getKinds().findType(config.type);
    if (!kind) continue;
    xCreate({config, *kind, Model::SensorProperties(config).getFieldOfView(), broker,
             robot.kindCode, *this});
  }
}

void RealSensorManager::xCreate(const SensorOrder& order) {
  const auto failed = [this, &order](const std::string& reason) {
    logTrouble(order.config.name, kRealManagerCategory, "xInitSensors",
               factory.getFailure(order.config) + ": \n" + reason);
  };
  try {
    for (const auto& sensor : factory.create(order)) {
      const std::string name = sensor->getName();
      if (xIsSensor(name) && !isOurs(order.kind)) {
        failed("a name of its own expected, another sensor is called \"" + name + "\"");
      }
      xAddSensor(sensor);
      // A second one that stands for all is not kept.
      if (sensors.at(name) == sensor) xDescribeHealth(*sensor, order);
    }
  } catch (const std::exception& exception) {
    failed(exception.what());
  }
}

void RealSensorManager::xAddSensor(boost::shared_ptr<Sensor> sensor) {
  const std::string name = sensor->getName();
  const std::string family = sensor->getFamilyName();
  sensors.emplace(name, sensor);
  ko::log::verbose(kRealManagerCategory, "xAddSensor") << name << " - " << family;
  families[family].insert(name);
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

boost::shared_ptr<const std::vector<Math::MetricalData>> RealSensorManager::xShareData() const {
  return xShareCache();
}

void RealSensorManager::xOnSensorOnChanged(bool anySensorOn) {
  boost::lock_guard<boost::mutex> lock(updateMutex);
  if (anySensorOn == updateRunning) {
    // What could not be started is told, too.
    if (!anySensorOn) xWatchHealth();
    return;
  }
  updateRunning = anySensorOn;
  xHealth().setRefreshed(anySensorOn);
  if (anySensorOn) {
    updateTask.start(true);
    xWatchHealth();
  } else {
    updateTask.stop();
    xSetData({});
  }
}

void RealSensorManager::xRefresh() const {
  xUpdateData();
  if (xHealth().isWatching()) xTellHealth();
}

void RealSensorManager::xTellHealth() const {
  if (xHealth().asksDeviceTime()) {
    ko::Clock::time_point deviceTime = ko::Clock::now();
    try {
      deviceTime = ko::Clock::fromInt32ms(DCMProxy(broker).getTime(0));
    } catch (...) {
      // One that does not answer can't say that its clock runs wrong.
    }
    xHealth().noteDeviceTime(deviceTime);
  }
  hasToldVelocity = !hasToldVelocity;
  if (!hasToldVelocity) return;
  try {
    xHealth().noteVelocity(Math::Pose2D(QVMotionProxy(broker).getRobotVelocity()));
  } catch (...) {
    // A robot that does not tell of its motion has sensors all the same.
  }
}

void RealSensorManager::xDescribeHealth(const Sensor& sensor, const SensorOrder& order) {
  using Model::PointMeaning;
  const Model::SensorKind& kind = order.kind;
  const bool isMoved = kind.points != PointMeaning::touch && kind.points != PointMeaning::zone &&
                       kind.points != PointMeaning::floor;
  const Model::SensorProperties properties(order.config);
  const ko::Duration period = std::max(periodOf(properties, kind),
                                       ko::Duration(boost::chrono::milliseconds(updatePeriodMs)));
  xHealth().describe(sensor, {kind.points, kind.silence, kind.hasRate, isMoved}, period);
  for (const ReadHealthRule& limit : readDescribedLimits(properties.getText("limits"))) {
    if (limit.expected.empty()) {
      xHealth().setLimit(sensor.getName(), limit.rule.limit, limit.rule.value);
    } else {
      logTrouble(
          sensor.getName(), kRealManagerCategory, "xInitSensors",
          sensor.getName() + ": limit \"" + limit.text + "\": " + limit.expected + " expected");
    }
  }
}

void RealSensorManager::xWatchHealth() {
  if (sensors.empty()) return;
  std::lock_guard<std::mutex> lock(healthMutex);
  if (!healthTask.isRunning()) healthTask.start(false);
}

// Ends itself, as whoever switches the last sensor off must not wait for what a change calls.
void RealSensorManager::xLookAtHealth() {
  xHealth().tick();
  std::lock_guard<std::mutex> lock(healthMutex);
  if (!updateRunning) healthTask.stop();
}

}  // namespace QV::sensor
