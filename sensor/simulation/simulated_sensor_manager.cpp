#include "sensor/simulation/simulated_sensor_manager.h"

#include "platform/ko/log.h"
#include "sensor/core/internal/health_inside.h"
#include "sensor/simulation/internal/robot_model_mock.h"

namespace QV::sensor {
namespace {

// Readers may come all the time, and the set of simulated sensors hardly ever changes.
constexpr ko::Duration kJudgePeriod{300'000'000};
constexpr char kSimulatedManagerCategory[] = "Navigation.SimulatedSensorManager";

}  // namespace

SimulatedSensorManager::SimulatedSensorManager(int robotKind, QV::OccupancyMap* map) {
  xInit(robotKind, map);
}

void SimulatedSensorManager::xInit(int robotKind, QV::OccupancyMap* map) {
  kindParameter = robotKind == -1 || robotKind == 0 ? 0.15f : 0.3f;
  simulationParameter = 1.0f;
  xAddSensors(robotKind);
  if (map) xSetOccMap(map);
}

void SimulatedSensorManager::xAddSensors(int robotKind) {
  for (const auto& sensor : RobotModelMock().getSimulatedSensors(robotKind)) {
    sensors.emplace(sensor->getName(), sensor);
    families[sensor->getFamilyName()].insert(sensor->getName());
  }
}

void SimulatedSensorManager::xSetOccMap(QV::OccupancyMap* map) {
  try {
    for (const auto& [name, sensor] : sensors) {
      dynamic_cast<SimulatedSensor&>(*sensor).setOccMap(map);
    }
  } catch (...) {
    ko::log::fatal(kSimulatedManagerCategory, "xInit") << "Wrong cast";
  }
}

void SimulatedSensorManager::setSensorsDebug(bool) {}

void SimulatedSensorManager::setPose2D(const Math::Pose2D& scanPose,
                                       const Math::Pose2D& referencePose) {
  for (const auto& [name, sensor] : sensors) {
    auto* simulated = dynamic_cast<SimulatedSensor*>(sensor.get());
    if (!simulated) {
      ko::log::fatal(kSimulatedManagerCategory, "setPose2D") << "Wrong sensor cast.";
      return;
    }
    simulated->setPose2D(scanPose, referencePose);
  }
}

std::vector<Math::MetricalData> SimulatedSensorManager::xGetData() const {
  xUpdateData();
  tickHealthOf(*this, kJudgePeriod);
  return xCopyData();
}

boost::shared_ptr<const std::vector<Math::MetricalData>> SimulatedSensorManager::xShareData()
    const {
  xUpdateData();
  tickHealthOf(*this, kJudgePeriod);
  return xShareCache();
}

void SimulatedSensorManager::xOnSensorOnChanged(bool) {}

}  // namespace QV::sensor
