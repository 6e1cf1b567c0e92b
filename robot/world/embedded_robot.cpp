#include "robot/world/embedded_robot.h"

#include "robot/world/robot_world.h"

namespace QV::robot {

EmbeddedRobot::EmbeddedRobot(const RobotDescription& description,
                             boost::shared_ptr<const OccupancyMap> map, const WorldOptions& options,
                             boost::shared_ptr<QVBroker> given)
    : broker(given ? std::move(given) : QVBroker::create()),
      world(boost::make_shared<RobotWorld>(description, std::move(map), options, broker)) {
  broker->registerModule(world);
  world->start();
}

EmbeddedRobot::EmbeddedRobot(const std::string& descriptionPath,
                             boost::shared_ptr<const OccupancyMap> map, const WorldOptions& options,
                             boost::shared_ptr<QVBroker> broker)
    : EmbeddedRobot(RobotDescription::fromFile(descriptionPath), std::move(map), options,
                    std::move(broker)) {}

EmbeddedRobot::~EmbeddedRobot() {
  world->stop();
}

const Model::Robot& EmbeddedRobot::getModel() const {
  return world->getModel();
}

const OccupancyMap& EmbeddedRobot::getMap() const {
  return world->getMap();
}

float EmbeddedRobot::getRadius() const {
  return world->getBodySize().radius;
}

void EmbeddedRobot::setVelocity(float vx, float vy, float omega) {
  world->setVelocity({vx, vy, omega});
}

Math::Pose2D EmbeddedRobot::getVelocity() const {
  return world->getState().velocity;
}

Math::Pose2D EmbeddedRobot::getPose() const {
  return world->getState().pose;
}

void EmbeddedRobot::setPose(const Math::Pose2D& pose) {
  world->setPose(pose);
}

Math::Pose2D EmbeddedRobot::getOdometry() const {
  return world->getState().odometry;
}

void EmbeddedRobot::setJointPositions(const std::map<std::string, double>& positions) {
  world->setJointPositions(positions);
}

std::set<std::string> EmbeddedRobot::getTouchedGroups() const {
  return world->getState().touched;
}

std::size_t EmbeddedRobot::getCollisionCount() const {
  return world->getState().collisionCount;
}

std::vector<Math::Position2D> EmbeddedRobot::getPeople() const {
  return world->getState().people;
}

void EmbeddedRobot::setFault(const std::string& sensor, FaultKind kind, ko::Duration from,
                             ko::Duration to) {
  setFault({sensor, kind, from, to});
}

void EmbeddedRobot::setFault(const Fault& fault) {
  world->getFaults().add(fault);
}

void EmbeddedRobot::clearFault(const std::string& sensor) {
  world->getFaults().clear(sensor);
}

std::vector<std::string> EmbeddedRobot::getFaultySensors() const {
  return world->getFaults().getSensors();
}

std::vector<FaultKind> EmbeddedRobot::getPossibleFaults(const std::string& sensor) const {
  return world->getFaults().getPossible(sensor);
}

}  // namespace QV::robot
