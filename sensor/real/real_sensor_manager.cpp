#include "sensor/real/real_sensor_manager.h"

#include <exception>
#include <utility>

#include <boost/thread/lock_guard.hpp>

#include "platform/ko/log.h"
#include "platform/middleware/contracts/device_manager_contract.h"
#include "platform/middleware/contracts/navigation_contract.h"
#include "platform/middleware/contracts/robot_model_contract.h"
#include "platform/middleware/qv_error.h"
#include "platform/middleware/qv_proxy.h"
#include "platform/model/model_utils.h"
#include "platform/model/robot.h"
#include "platform/model/sensor_properties.h"

namespace QV::sensor {
namespace {

constexpr char kRealManagerCategory[] = "Navigation.RealSensorManager";

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
  updateTask.stop();
}

void RealSensorManager::xInit() {
  if (!dcmPresent && !sensorsDebug) return;
  xInitSensors();
  dcmPresent = broker->isModulePresent(DeviceManagerContract::kModule);
  updateTask.setName("MetricalSensors");
  updateTask.setCallback([this] { xUpdateData(); });
  updateTask.setUsPeriod(std::int64_t{updatePeriodMs} * 1000);
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
      if (xIsSensor(name) && !order.kind.standsForAll) {
        failed("a name of its own expected, another sensor is called \"" + name + "\"");
      }
      xAddSensor(sensor);
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
