#include "session/internal/session_robot.h"

#include "session/internal/sensor_meaning.h"

namespace QV::session {

const Model::SensorKind* findKind(SessionRobot& robot, const std::string& sensor) {
  return findKind(robot.getManager(), sensor, robot.getKinds());
}

Model::PointMeaning findMeaning(SessionRobot& robot, const std::string& sensor) {
  return findMeaning(robot.getManager(), sensor, findKind(robot, sensor));
}

}  // namespace QV::session
