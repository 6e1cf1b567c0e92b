#include "session/internal/session_robot.h"

#include "session/internal/sensor_meaning.h"

namespace QV::session {

const Model::SensorKind* findKind(SessionRobot& robot, const std::string& sensor) {
  const boost::shared_ptr<sensor::Sensor> found = robot.getManager().getSensorPtr(sensor);
  if (!found || isSimulated(*found)) return nullptr;
  if (const Model::Robot* description = robot.getDescription()) {
    const auto config = description->sensorConfigs.find(sensor);
    if (config != description->sensorConfigs.end()) {
      const auto* kind = robot.getKinds().findType(config->second.type);
      if (kind && kind->family == found->getFamilyName()) return kind;
    }
  }
  return robot.getKinds().findFamily(found->getFamilyName());
}

Model::PointMeaning findMeaning(SessionRobot& robot, const std::string& sensor) {
  const boost::shared_ptr<sensor::Sensor> found = robot.getManager().getSensorPtr(sensor);
  if (!found) return Model::PointMeaning::scan;
  return meaningOf(*found, findKind(robot, sensor));
}

}  // namespace QV::session
