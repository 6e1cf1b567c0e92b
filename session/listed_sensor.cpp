#include "session/listed_sensor.h"

#include <algorithm>
#include <numbers>

#include "platform/model/sensor_kinds.h"
#include "platform/model/sensor_properties.h"
#include "sensor/core/scoped_subscription.h"
#include "session/simulated_session.h"

namespace QV::session {
namespace {

// Half a turn comes back from a transform with either sign.
float headingOf(const Math::Transform& transform) {
  constexpr float kPi = std::numbers::pi_v<float>;
  const float theta = Math::pose2DFromTransform(transform).theta;
  return theta < -kPi + 1e-5f ? theta + 2.0f * kPi : theta;
}

ListedSensor describe(const Model::SensorConfig& config) {
  const Model::SensorKind* kind = Model::SensorKinds::standard().findType(config.type);
  return {kind ? kind->family : "",
          config.name,
          Model::SensorProperties(config).getFieldOfView(),
          Math::position3DFromTransform(config.origin),
          headingOf(config.origin),
          config.type,
          config.memoryKeys.size(),
          config.parentLink};
}

}  // namespace

// At the origin, and without a map, a record's transform is the sensor's mounting.
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

std::vector<ListedSensor> sensorsOf(const Model::Robot& robot) {
  std::vector<ListedSensor> sensors;
  for (const auto& [name, config] : robot.sensorConfigs) sensors.push_back(describe(config));
  return sensors;
}

}  // namespace QV::session
