#include "robot/services/internal/sonar_config.h"

#include "platform/model/sensor_kinds.h"

namespace QV::robot {

bool isSonar(const Model::SensorConfig& config) {
  const Model::SensorKind* kind = Model::SensorKinds::standard().findType(config.type);
  return kind && kind->name == "Sonar" && config.memoryKeys.size() == 1;
}

}  // namespace QV::robot
