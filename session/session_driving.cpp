#include "platform/ko/clock.h"
#include "robot/world/virtual_robot.h"
#include "session/internal/seconds.h"
#include "session/internal/session_parts.h"
#include "session/internal/timed_path.h"
#include "session/session.h"
#include "session/usage_error.h"

namespace QV::session {
namespace {

robot::VirtualRobot& virtualOf(SessionParts& parts) {
  if (auto* robot = parts.robot->getVirtualRobot()) return *robot;
  if (parts.robot->isRecording()) throw UsageError("a recording can't be made to fail");
  throw UsageError("faults need a virtual robot; this is \"" + parts.robot->getTitle() + "\"");
}

}  // namespace

SessionCommand commandOf(const robot::Fault& fault) {
  SessionCommand command{"fault " + std::string(robot::getName(fault.kind)),
                         {},
                         {fault.sensor},
                         true,
                         {inSeconds(fault.from)}};
  if (fault.to != ko::Duration::max()) command.values.push_back(inSeconds(fault.to));
  return command;
}

void Session::drive(float forward, float turn) {
  parts->tell({"drive", {}, {}, true, {forward, turn}});
  parts->driver.drive(forward, turn);
}

void Session::drive(const Math::Pose2D& velocity, ko::Duration hold) {
  SessionCommand command{"drive", {}, {}, true, {velocity.x, velocity.theta}};
  if (velocity.y != 0.0f) command.values.push_back(velocity.y);
  parts->tell(command);
  parts->driver.drive(velocity, hold);
}

void Session::setGoal(const Math::Position2D& position) {
  parts->tell({"goal", {}, {}, true, {position.x, position.y}});
  parts->driver.setGoal(position);
}

double Session::follow(const std::vector<Math::Position2D>& path, double speed, double turnSpeed) {
  const TimedPath follower(path, speed, turnSpeed);
  SessionCommand command{"follow", {}, {}, true, {speed, turnSpeed}};
  for (const Math::Position2D& corner : path) {
    command.values.insert(command.values.end(), {corner.x, corner.y});
  }
  parts->tell(command);
  parts->driver.follow(follower);
  return follower.getDuration();
}

void Session::wander() {
  parts->tell({"wander"});
  parts->driver.wander();
}

void Session::stop() {
  parts->tell({"stop"});
  parts->driver.stop();
}

void Session::setPose(const Math::Pose2D& pose) {
  parts->tell({"pose", {}, {}, true, {pose.x, pose.y, pose.theta}});
  parts->robot->setPose(pose);
}

std::vector<std::string> Session::getFaultySensors() const {
  auto* robot = parts->robot->getVirtualRobot();
  return robot ? robot->getFaultySensors() : std::vector<std::string>();
}

std::vector<robot::FaultKind> Session::getPossibleFaults(const std::string& sensor) const {
  return virtualOf(*parts).getPossibleFaults(sensor);
}

void Session::setFault(const robot::Fault& fault) {
  parts->tell(commandOf(fault));
  virtualOf(*parts).setFault(fault);
}

void Session::clearFault(const std::string& sensor) {
  parts->tell({"fault", {}, {sensor}, false});
  virtualOf(*parts).clearFault(sensor);
}

}  // namespace QV::session
