#include "robot/world/virtual_robot.h"

#include <utility>

#include "robot/world/internal/robot_world.h"
#include "robot/world/units/unit_factory.h"

namespace QV::robot {

VirtualRobot::VirtualRobot(const RobotDescription& description,
                           boost::shared_ptr<const OccupancyMap> map, const WorldOptions& options,
                           boost::shared_ptr<QVBroker> broker)
    : VirtualRobot(description, std::move(map), options, std::move(broker),
                   UnitFactory::standard()) {}

VirtualRobot::VirtualRobot(const RobotDescription& description,
                           boost::shared_ptr<const OccupancyMap> map, const WorldOptions& options,
                           boost::shared_ptr<QVBroker> given, const UnitFactory& units)
    : broker(given ? std::move(given) : QVBroker::create()),
      world(boost::make_shared<RobotWorld>(description, std::move(map), options, broker, units)) {
  broker->registerModule(world);
  world->start();
}

VirtualRobot::VirtualRobot(const std::string& descriptionPath,
                           boost::shared_ptr<const OccupancyMap> map, const WorldOptions& options,
                           boost::shared_ptr<QVBroker> broker)
    : VirtualRobot(RobotDescription::fromFile(descriptionPath), std::move(map), options,
                   std::move(broker)) {}

VirtualRobot::~VirtualRobot() {
  world->stop();
}

const Model::Robot& VirtualRobot::getModel() const {
  return world->getModel();
}

const OccupancyMap& VirtualRobot::getMap() const {
  return world->getMap();
}

float VirtualRobot::getRadius() const {
  return world->getBodySize().radius;
}

void VirtualRobot::setVelocity(float vx, float vy, float omega) {
  world->setVelocity({vx, vy, omega});
}

Math::Pose2D VirtualRobot::getVelocity() const {
  return world->getState().velocity;
}

Math::Pose2D VirtualRobot::getPose() const {
  return world->getState().pose;
}

void VirtualRobot::setPose(const Math::Pose2D& pose) {
  world->setPose(pose);
}

Math::Pose2D VirtualRobot::getOdometry() const {
  return world->getState().odometry;
}

void VirtualRobot::setJointPositions(const std::map<std::string, double>& positions) {
  world->setJointPositions(positions);
}

std::set<std::string> VirtualRobot::getTouchedGroups() const {
  return world->getTouched();
}

std::size_t VirtualRobot::getCollisionCount() const {
  return world->getState().collisionCount;
}

std::vector<Math::Position2D> VirtualRobot::getPeople() const {
  return world->getState().people;
}

void VirtualRobot::setFault(const std::string& sensor, FaultKind kind, ko::Duration from,
                            ko::Duration to) {
  setFault({sensor, kind, from, to});
}

void VirtualRobot::setFault(const Fault& fault) {
  world->getFaults().add(fault);
}

void InputTap::set(VirtualRobot& robot, InputListener* listener) {
  robot.world->setListener(listener);
}

void VirtualRobot::clearFault(const std::string& sensor) {
  world->getFaults().clear(sensor);
}

std::optional<FaultKind> VirtualRobot::findFault(const std::string& sensor) const {
  return world->getFaults().find(sensor, ko::Clock::now());
}

std::vector<Fault> VirtualRobot::getFaults() const {
  return world->getFaults().getAll();
}

std::vector<std::string> VirtualRobot::getFaultySensors() const {
  return world->getFaults().getSensors();
}

std::vector<FaultKind> VirtualRobot::getPossibleFaults(const std::string& sensor) const {
  return world->getFaults().getPossible(sensor);
}

}  // namespace QV::robot
