#include "ros2/link/heard_robot.h"

#include <utility>

#include "platform/ko/simulated_time.h"
#include "ros2/link/internal/heard_session_robot.h"
#include "session/internal/make_session.h"

namespace QV::ros2 {

HeardRobot::HeardRobot(const HeardRobotOptions& options)
    : modules(std::make_unique<HeardModules>(planRobot(options))) {}

HeardRobot::~HeardRobot() = default;

const boost::shared_ptr<QVBroker>& HeardRobot::getBroker() const {
  return modules->getModules().getBroker();
}

const std::string& HeardRobot::getDescription() const {
  return modules->getDescription();
}

Math::Pose2D HeardRobot::getPose() const {
  return modules->getModules().getPose();
}

void HeardRobot::drive(const Math::Pose2D& velocity) {
  modules->drive(velocity);
}

void HeardRobot::obey(const sensor::SensorManager* manager) {
  modules->obey(manager);
}

std::unique_ptr<session::Session> openHeardRobot(const HeardRobotOptions& options) {
  HeardPlan plan = planRobot(options);
  auto time = std::make_unique<ko::SimulatedTime>();
  auto robot = std::make_unique<HeardSessionRobot>(std::move(plan));
  return session::makeSession(std::move(time), std::move(robot));
}

std::string describeHeardRobot(const HeardRobotOptions& options) {
  return planRobot(options).description;
}

}  // namespace QV::ros2
