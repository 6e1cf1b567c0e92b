#include "ros2/recording/internal/sensor_sorts.h"

#include "platform/model/sensor_kinds.h"

namespace QV::ros2 {

SensorSort sortOf(const Model::SensorConfig& config) {
  using Model::PointMeaning;
  const Model::SensorKind* kind = Model::SensorKinds::standard().findType(config.type);
  if (!kind) return SensorSort::other;
  const std::size_t keys = config.memoryKeys.size();
  switch (kind->points) {
    case PointMeaning::scan:
    case PointMeaning::floor:
      return keys > 1 ? SensorSort::scan : SensorSort::other;
    case PointMeaning::arc:
      return keys == 1 ? SensorSort::range : SensorSort::other;
    case PointMeaning::zone:
      return keys == 1 ? SensorSort::contact : SensorSort::other;
    case PointMeaning::touch:
      return SensorSort::contact;
    case PointMeaning::sighting:
      return kind->findProperty("verticalAngularRange") ? SensorSort::camera : SensorSort::other;
  }
  return SensorSort::other;
}

std::vector<const Model::SensorConfig*> camerasOf(const Model::Robot& robot) {
  std::vector<const Model::SensorConfig*> cameras;
  for (const auto& [name, config] : robot.sensorConfigs) {
    if (sortOf(config) == SensorSort::camera) cameras.push_back(&config);
  }
  return cameras;
}

}  // namespace QV::ros2
