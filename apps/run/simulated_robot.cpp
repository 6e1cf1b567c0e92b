#include "apps/run/simulated_robot.h"

#include "apps/usage_error.h"
#include "platform/ko/log.h"
#include "robot/world/map_files.h"

namespace QV::app {
namespace {

std::string joined(const std::set<std::string>& names) {
  std::string result;
  for (const std::string& name : names) result += (result.empty() ? "" : ", ") + name;
  return result;
}

}  // namespace

SimulatedRobot::SimulatedRobot(int kind, const std::string& mapPath)
    : map((checkKind(kind), robot::loadMap(mapPath))), manager(kind, &map) {}

void checkKind(int kind) {
  // The catalogue's own line would be a second one beside ours.
  ko::log::setLevel("RobotModelMock", ko::log::Level::silent);
  const bool known = !sensor::RobotModelMock().getSimulatedSensors(kind).empty();
  ko::log::resetLevel("RobotModelMock");
  if (known) return;
  throw UsageError("--kind: a kind with simulated sensors (-1, 0 or 1) expected, " +
                   std::to_string(kind) + " given");
}

void checkNames(const sensor::SensorManager& manager, const std::set<std::string>& names) {
  for (const std::string& name : names) {
    if (manager.isFamily(name) || manager.isSensor(name)) continue;
    throw UsageError("--subscribe: no sensor or family \"" + name +
                     "\"; this robot has the families " + joined(manager.getFamilyNames()) +
                     " and the sensors " + joined(manager.getSensorList()));
  }
}

}  // namespace QV::app
