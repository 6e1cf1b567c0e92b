#include "session/virtual_session.h"

#include <utility>

#include <boost/make_shared.hpp>

#include "platform/middleware/qv_memory_proxy.h"
#include "platform/middleware/qv_motion_proxy.h"
#include "platform/model/sensor_kinds.h"
#include "sensor/real/sensor_family.h"
#include "session/internal/steering.h"

namespace QV::session {

VirtualSession::VirtualSession(const robot::RobotDescription& description, OccupancyMap givenMap,
                               const robot::WorldOptions& world)
    : map(boost::make_shared<OccupancyMap>(std::move(givenMap))),
      robot(description, map, world),
      navigation(boost::make_shared<sensor::NavigationModule>(robot.getBroker())),
      hosting(robot.getBroker(), navigation),
      wanderer(robot.getMap()) {}

// A sensor that is not in the description by its own name goes by its family.
Model::PointMeaning VirtualSession::getMeaning(const std::string& sensor) const {
  const auto& kinds = Model::SensorKinds::standard();
  const auto& configs = robot.getModel().sensorConfigs;
  const auto config = configs.find(sensor);
  const Model::SensorKind* kind =
      config == configs.end() ? nullptr : kinds.findType(config->second.type);
  const auto found = navigation->getManager().getSensorPtr(sensor);
  if (!kind && found) kind = kinds.findFamily(found->getFamilyName());
  return kind ? kind->points : Model::PointMeaning::scan;
}

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
    const std::string family = sensor::familyOfType(config.type);
    // One sensor stands for all touch configurations, and one camera is all that is wanted.
    const bool stands = (family == "Touch" || family == "Asus") && manager.isFamily(family);
    if (!family.empty() && !stands && !manager.isSensor(name)) unbuilt[name] = family;
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
