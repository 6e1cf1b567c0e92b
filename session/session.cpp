#include "session/session.h"

#include <map>
#include <string>
#include <utility>

#include "platform/ko/clock.h"
#include "robot/world/virtual_robot.h"
#include "session/internal/seconds.h"
#include "session/internal/session_parts.h"

namespace QV::session {
namespace {

std::map<std::string, std::string> faultsOf(SessionRobot& robot) {
  std::map<std::string, std::string> faults;
  const auto* world = robot.getVirtualRobot();
  if (!world) return faults;
  for (const std::string& sensor : world->getFaultySensors()) {
    const auto kind = world->findFault(sensor);
    if (kind) faults[sensor] = getName(*kind);
  }
  return faults;
}

}  // namespace

SessionRobot& robotOf(Session& session) {
  return *SessionParts::of(session).robot;
}

void addListener(Session& session, SessionListener& listener) {
  const SessionParts& parts = SessionParts::of(session);
  parts.listeners->add(listener, *parts.robot);
}

void removeListener(Session& session, SessionListener& listener) {
  const SessionParts& parts = SessionParts::of(session);
  parts.listeners->remove(listener, *parts.robot);
}

Session::Session(std::unique_ptr<SessionParts> parts) : parts(std::move(parts)) {}

Session::~Session() {
  parts->robot->setListener(nullptr);
  parts->driver.stop();
}

Snapshot Session::look() {
  SessionRobot& robot = *parts->robot;
  parts->notePlace();
  Snapshot snapshot;
  snapshot.title = robot.getTitle();
  snapshot.time = ko::Clock::now();
  snapshot.paused = parts->pacing.isPaused();
  snapshot.speed = parts->pacing.getSpeed();
  if (const auto length = robot.getLength())
    snapshot.recording = {inSeconds(snapshot.time - robot.getStart()), inSeconds(*length)};
  snapshot.pose = robot.getPose();
  snapshot.velocity = robot.getVelocity();
  snapshot.goal = parts->driver.getGoal();
  snapshot.route = parts->driver.getRoute();
  parts->sensorLook.look(snapshot);
  snapshot.frame = robot.getFrame();
  snapshot.map = robot.getMap();
  snapshot.people = robot.getPeople();
  snapshot.touches = parts->touchLook.look();
  snapshot.faults = faultsOf(robot);
  return snapshot;
}

std::string Session::getTitle() const {
  return parts->robot->getTitle();
}

Math::Pose2D Session::getPose() const {
  return parts->robot->getPose();
}

boost::shared_ptr<const OccupancyMap> Session::getMap() const {
  return parts->robot->getMap();
}

float Session::getRadius() const {
  return parts->robot->getRadius();
}

Frame Session::getFrame() const {
  return parts->robot->getFrame();
}

sensor::SensorManager& Session::getManager() const {
  return parts->robot->getManager();
}

boost::shared_ptr<QVBroker> Session::getBroker() const {
  return parts->robot->getBroker();
}

const Model::Robot* Session::getDescription() const {
  return parts->robot->getDescription();
}

const Model::SensorKinds& Session::getKinds() const {
  return parts->robot->getKinds();
}

void Session::subscribe(const std::string& subscriber, const std::set<std::string>& names) {
  parts->tell({"subscribe", subscriber, names, true});
  parts->switches.subscribe(subscriber, names);
}

void Session::unsubscribe(const std::string& subscriber, const std::set<std::string>& names) {
  parts->tell({"subscribe", subscriber, names, false});
  parts->switches.unsubscribe(subscriber, names);
}

void Session::enable(const std::string& name, bool on) {
  parts->tell({"enable", {}, {name}, on});
  parts->switches.enable(name, on);
}

void Session::diagnose(const std::string& sensor, bool success) {
  parts->tell({"diagnose", {}, {sensor}, success});
  parts->switches.diagnose(sensor, success);
}

void Session::setDemand(const Demand& demand) {
  parts->demand.set(demand,
                    [this](const std::string& subscriber, const std::string& sensor, bool on) {
                      parts->tell({"subscribe", subscriber, {sensor}, on});
                    });
}

}  // namespace QV::session
