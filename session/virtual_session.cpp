#include "session/virtual_session.h"

#include <utility>

#include <boost/make_shared.hpp>

#include "platform/middleware/qv_memory_proxy.h"
#include "platform/middleware/qv_motion_proxy.h"
#include "platform/model/sensor_kinds.h"
#include "session/internal/steering.h"

namespace QV::session {

VirtualSession::VirtualSession(const robot::RobotDescription& description, OccupancyMap map,
                               const robot::WorldOptions& world)
    : robot(description, boost::make_shared<OccupancyMap>(std::move(map)), world),
      navigation(boost::make_shared<sensor::NavigationModule>(robot.getBroker())),
      hosting(robot.getBroker(), navigation),
      wanderer(robot.getMap()) {}

std::string VirtualSession::getTitle() const {
  return "Virtual robot " + robot.getModel().name;
}

// Five cycles of the manager's, and two of the slowest source of records.
ko::Duration VirtualSession::getSettlingTime() const {
  return boost::chrono::milliseconds(500);
}

std::map<std::string, std::string> VirtualSession::getUnbuilt() const {
  const auto& manager = navigation->getManager();
  std::map<std::string, std::string> unbuilt;
  for (const auto& [name, config] : robot.getModel().sensorConfigs) {
    const Model::SensorKind* kind = Model::SensorKinds::standard().findType(config.type);
    if (!kind || manager.isSensor(name)) continue;
    if (!kind->standsForAll || !manager.isFamily(kind->family)) unbuilt[name] = kind->family;
  }
  return unbuilt;
}

std::string VirtualSession::findMissingInput(const std::string& sensor) const {
  const auto& configs = robot.getModel().sensorConfigs;
  const auto config = configs.find(sensor);
  if (config == configs.end()) return {};
  const QVMemoryProxy memory(robot.getBroker());
  for (const std::string& key : config->second.memoryKeys) {
    try {
      memory.getData(key).toFloat();
    } catch (const std::exception& exception) {
      return "memory key " + key + ": " + exception.what();
    }
  }
  return {};
}

void VirtualSession::wander() {
  wandering.setName("Wandering");
  wandering.setPeriod(boost::chrono::milliseconds(100));
  wandering.setCallback([this] { drive(wanderer.step(robot.getPose(), robot.getVelocity())); });
  wandering.start(true);
}

void VirtualSession::follow(const PathFollower& path, double seconds) {
  drive(steer(path, seconds, robot.getPose()));
}

void VirtualSession::drive(const Math::Pose2D& velocity) {
  robot.setVelocity(velocity.x, velocity.y, velocity.theta);
}

std::map<std::string, Math::Position2D> VirtualSession::getTouches() const {
  constexpr int kGroundFrame = 1;
  const QVMotionProxy motion(robot.getBroker());
  const Math::Pose2D pose = robot.getPose();
  std::map<std::string, Math::Position2D> touches;
  for (const std::string& group : robot.getTouchedGroups()) {
    const Math::Transform onRobot(motion.getTransform(group, kGroundFrame, true));
    const Math::Position3D position = Math::position3DFromTransform(onRobot);
    touches[group] = pose * Math::Position2D(position.x, position.y);
  }
  return touches;
}

}  // namespace QV::session
