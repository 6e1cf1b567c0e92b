#include "ros2/recording/internal/sensor_sorts.h"

#include "platform/model/sensor_properties.h"

namespace QV::ros2 {

bool isCamera(const Model::SensorConfig& config) {
  const Model::SensorKind* kind = Model::SensorKinds::standard().findType(config.type);
  return kind && kind->isCamera();
}

SensorSort sortOf(const Model::SensorConfig& config, const Model::SensorKinds& kinds) {
  const Model::SensorKind* kind = kinds.findType(config.type);
  if (!kind) return SensorSort::other;
  if (kind->points == Model::PointMeaning::touch) return SensorSort::contact;
  const std::size_t keys = config.memoryKeys.size();
  switch (kind->keys.holds) {
    case Model::KeyContent::coordinates:
      return keys > 1 ? SensorSort::scan : SensorSort::other;
    case Model::KeyContent::range:
      return keys == 1 ? SensorSort::range : SensorSort::other;
    case Model::KeyContent::presence:
      return keys == 1 ? SensorSort::contact : SensorSort::other;
    case Model::KeyContent::other:
      break;
  }
  return isCamera(config) ? SensorSort::camera : SensorSort::other;
}

std::vector<const Model::SensorConfig*> camerasOf(const Model::Robot& robot) {
  std::vector<const Model::SensorConfig*> cameras;
  for (const auto& [name, config] : robot.sensorConfigs) {
    if (isCamera(config)) cameras.push_back(&config);
  }
  return cameras;
}

std::string peopleFrameOf(const Model::SensorConfig& camera) {
  const std::string name = Model::SensorProperties(camera).getText("cameraName");
  return name.empty() ? camera.name : name;
}

}  // namespace QV::ros2
