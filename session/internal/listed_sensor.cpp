#include "session/internal/listed_sensor.h"

#include <algorithm>
#include <exception>
#include <numbers>
#include <set>

#include <boost/make_shared.hpp>

#include "platform/ko/log.h"
#include "platform/ko/simulated_time.h"
#include "platform/model/sensor_kinds.h"
#include "platform/model/sensor_properties.h"
#include "sensor/core/scoped_subscription.h"
#include "session/internal/sensor_meaning.h"
#include "session/internal/simulated_session_robot.h"
#include "session/internal/virtual_session_robot.h"

namespace QV::session {
namespace {

// Half a turn comes back from a transform with either sign.
float headingOf(const Math::Transform& transform) {
  constexpr float kPi = std::numbers::pi_v<float>;
  const float theta = Math::pose2DFromTransform(transform).theta;
  return theta < -kPi + 1e-5f ? theta + 2.0f * kPi : theta;
}

void compare(std::vector<ListedSensor>& sensors, const robot::RobotDescription& description,
             const sensor::SensorManager& manager) {
  std::set<std::string> others = manager.getSensorList();
  for (ListedSensor& sensor : sensors) {
    const std::string name = findSensorOf(description.model.sensorConfigs.at(sensor.describedAs),
                                          description.kinds, manager);
    sensor.canBeBuilt = !name.empty();
    if (sensor.canBeBuilt) sensor.name = name;
    others.erase(name);
  }
  for (const std::string& name : others) {
    sensors.push_back({manager.getSensorPtr(name)->getFamilyName(), name, {}, {}});
  }
}

boost::shared_ptr<const OccupancyMap> emptyRoom() {
  constexpr int kCells = 100;
  constexpr float kResolution = 0.1f;
  return boost::make_shared<OccupancyMap>(kCells, kCells, kResolution, Math::Pose2D(), 0.0f);
}

ListedSensor describe(const Model::SensorConfig& config, const Model::SensorKinds& kinds) {
  const Model::SensorKind* kind = kinds.findType(config.type);
  return {kind ? kind->family : std::string(),
          config.name,
          Model::SensorProperties(config).getFieldOfView(),
          Math::position3DFromTransform(config.origin),
          headingOf(config.origin),
          config.type,
          kind ? kind->name : std::string(),
          config.memoryKeys.size(),
          config.parentLink,
          config.name};
}

}  // namespace

// A record's transform is the sensor's mounting if the robot is at the origin, without a map.
std::vector<ListedSensor> sensorsOfKind(int kind) {
  checkKind(kind);
  sensor::SimulatedSensorManager manager(kind, nullptr);
  const sensor::ScopedSubscription subscription(manager, "qvsensors");
  std::vector<ListedSensor> sensors;
  for (const auto& record : manager.getMetricalData()) {
    const Math::Transform& at = record.sensorTransform;
    sensors.push_back({record.familyName, record.sensorName, record.fieldOfView,
                       Math::position3DFromTransform(at), headingOf(at)});
  }
  std::stable_sort(sensors.begin(), sensors.end(),
                   [](const auto& a, const auto& b) { return a.family < b.family; });
  return sensors;
}

std::vector<ListedSensor> sensorsOf(const robot::RobotDescription& description,
                                    const OpenOptions& options) {
  const Model::Robot& model = description.model;
  std::vector<ListedSensor> sensors;
  sensors.reserve(model.sensorConfigs.size());
  for (const auto& [name, config] : model.sensorConfigs) {
    sensors.push_back(describe(config, description.kinds));
  }
  try {
    const ko::SimulatedTime time;
    VirtualSessionRobot robot(description, emptyRoom(), {.start = {5.0f, 5.0f, 0.0f}},
                              options.sensors, options.units);
    compare(sensors, description, robot.getManager());
  } catch (const std::exception& exception) {
    ko::log::info("Session", "sensorsOf") << exception.what();
  }
  return sensors;
}

}  // namespace QV::session
