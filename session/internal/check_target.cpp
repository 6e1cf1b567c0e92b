#include "session/internal/check_target.h"

#include "platform/ko/os.h"
#include "session/internal/description_gaps.h"
#include "session/internal/sensor_meaning.h"
#include "session/internal/session_parts.h"

namespace QV::session {
namespace {

std::string textSince(const sensor::LastTrouble& trouble, const std::string& sensor,
                      ko::Clock::time_point start) {
  const auto line = trouble.get(sensor);
  return line && line->timestamp >= start ? line->message : std::string();
}

}  // namespace

SensorNature ManagerTarget::getNature(const std::string& name) {
  const auto sensor = manager.getSensorPtr(name);
  const auto* kind = isSimulated(*sensor) ? nullptr : kinds.findFamily(sensor->getFamilyName());
  return {meaningOf(*sensor, kind), kind};
}

void ManagerTarget::wait(ko::Duration duration) {
  ko::os::msleep(static_cast<int>(
      boost::chrono::duration_cast<boost::chrono::milliseconds>(duration).count()));
}

std::string ManagerTarget::findTrouble(const std::string& sensor, ko::Clock::time_point start) {
  return textSince(trouble, sensor, start);
}

SessionTarget::SessionTarget(Session& session) : session(session), robot(robotOf(session)) {}

SensorNature SessionTarget::getNature(const std::string& sensor) {
  return {findMeaning(robot, sensor), findKind(robot, sensor)};
}

void SessionTarget::turn(float angle) {
  const Math::Pose2D pose = robot.getPose();
  session.setPose({pose.x, pose.y, pose.theta + angle});
}

std::string SessionTarget::findTrouble(const std::string& sensor, ko::Clock::time_point start) {
  return textSince(robot.getNavigation().getLastTrouble(), sensor, start);
}

std::string SessionTarget::findMissing(const std::string& sensor) {
  return findMissingInput(robot, sensor);
}

std::map<std::string, std::string> SessionTarget::findUnbuilt() {
  return findUnbuiltSensors(robot);
}

}  // namespace QV::session
