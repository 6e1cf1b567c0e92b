#include "session/internal/check_target.h"

#include <algorithm>

#include "platform/ko/clock.h"
#include "session/internal/description_gaps.h"
#include "session/internal/sensor_meaning.h"
#include "session/internal/session_parts.h"

namespace QV::session {

std::string CheckTarget::findTrouble(const std::string& sensor, ko::Clock::time_point start) {
  const auto line = getManager().getLastTrouble(sensor);
  const bool matters = line && line->level <= ko::log::Level::warning && line->timestamp >= start;
  return matters ? line->message : std::string();
}

SensorNature ManagerTarget::getNature(const std::string& name) {
  const auto* kind = findKind(manager, name, kinds);
  return {findMeaning(manager, name, kind), kind};
}

void ManagerTarget::wait(ko::Duration duration) {
  ko::os::msleep(static_cast<int>(
      boost::chrono::duration_cast<boost::chrono::milliseconds>(duration).count()));
}

SessionTarget::SessionTarget(Session& session) : session(session), robot(robotOf(session)) {}

SensorNature SessionTarget::getNature(const std::string& sensor) {
  return {findMeaning(robot, sensor), findKind(robot, sensor)};
}

ko::Duration SessionTarget::getStartingTime() const {
  return std::max(CheckTarget::getStartingTime(), robot.getSettlingTime());
}

void SessionTarget::turn(float angle) {
  const Math::Pose2D pose = robot.getPose();
  session.setPose({pose.x, pose.y, pose.theta + angle});
}

std::string SessionTarget::findMissing(const std::string& sensor) {
  return findMissingInput(robot, sensor);
}

std::map<std::string, std::string> SessionTarget::findUnbuilt() {
  return findUnbuiltSensors(robot);
}

}  // namespace QV::session
