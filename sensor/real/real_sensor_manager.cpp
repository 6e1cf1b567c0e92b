#include "sensor/real/real_sensor_manager.h"

#include <utility>

#include <boost/make_shared.hpp>

#include "platform/middleware/contracts/device_manager_contract.h"
#include "platform/middleware/contracts/navigation_contract.h"
#include "platform/middleware/dcm_proxy.h"
#include "platform/middleware/qv_error.h"
#include "platform/middleware/qv_motion_proxy.h"
#include "sensor/core/internal/health_inside.h"

namespace QV::sensor {
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
  // A sensor of a real robot that hangs or fails is named, whether or not anybody asks.
  healthOf(*this).beAsked();
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
  std::lock_guard<std::mutex> lock(updateMutex);
  if (anySensorOn == updateRunning) {
    // Health also reports sensors that could not be started.
    if (!anySensorOn) xWatchHealth();
    return;
  }
  updateRunning = anySensorOn;
  healthOf(*this).setRefreshed(anySensorOn);
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
  if (healthOf(*this).isWatching()) xTellHealth();
}

void RealSensorManager::xTellHealth() const {
  if (healthOf(*this).asksDeviceTime()) {
    ko::Clock::time_point deviceTime = ko::Clock::now();
    try {
      deviceTime = ko::Clock::fromInt32ms(DCMProxy(broker).getTime(0));
    } catch (...) {
      // A device manager that does not answer gives no time.
    }
    healthOf(*this).noteDeviceTime(deviceTime);
  }
  hasToldVelocity = !hasToldVelocity;
  if (!hasToldVelocity) return;
  try {
    if (!motion) motion = boost::make_shared<const QVMotionProxy>(broker);
    healthOf(*this).noteVelocity(Math::Pose2D(motion->getRobotVelocity()));
  } catch (...) {
    // A robot without a motion service has sensors all the same.
  }
}

void RealSensorManager::xWatchHealth() {
  if (sensors.empty()) return;
  std::lock_guard<std::mutex> lock(healthMutex);
  if (!healthTask.isRunning()) healthTask.start(false);
}

// The task ends itself, because stopping the last sensor must not wait for a callback.
// What a callback has changed is judged once more before.
void RealSensorManager::xLookAtHealth() {
  const bool wasIdle = !updateRunning;
  healthOf(*this).tick();
  std::lock_guard<std::mutex> lock(healthMutex);
  if (wasIdle && !updateRunning) healthTask.stop();
}

}  // namespace QV::sensor
