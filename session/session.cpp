#include "session/session.h"

#include <algorithm>
#include <utility>

#include "platform/ko/clock.h"
#include "robot/world/virtual_robot.h"
#include "session/internal/seconds.h"
#include "session/internal/session_listener.h"
#include "session/internal/session_parts.h"
#include "session/internal/timed_path.h"
#include "session/usage_error.h"

namespace QV::session {
namespace {

// The robot is steered whenever so much has gone by, and at the end of what is asked for.
constexpr ko::Duration kSlice{20'000'000};

robot::VirtualRobot& virtualOf(SessionParts& parts) {
  if (auto* robot = parts.robot->getVirtualRobot()) return *robot;
  throw UsageError("a virtual robot expected, whose sensors can be made to fail; this is a " +
                   parts.robot->getTitle());
}

void goTo(SessionParts& parts, ko::Clock::time_point time) {
  // What fell due may have slept beyond that.
  const ko::Duration left = time - ko::Clock::now();
  if (left <= ko::Duration::zero()) return;
  if (parts.time) return parts.time->advance(left);
  ko::os::msleep(static_cast<int>(boost::chrono::ceil<boost::chrono::milliseconds>(left).count()));
}

void goOnTo(SessionParts& parts, ko::Clock::time_point time) {
  for (auto due = parts.robot->getNextStep(); due && *due <= time;
       due = parts.robot->getNextStep()) {
    goTo(parts, *due);
    parts.robot->makeStep();
  }
  goTo(parts, time);
}

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

void notePlace(SessionParts& parts) {
  parts.sensorLook.notePose();
  parts.touchLook.note();
}

void note(SessionParts& parts) {
  notePlace(parts);
  parts.sensorLook.noteMeasurements();
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

SessionRobot& robotOf(Session& session) {
  return *session.parts->robot;
}

Session::Session(std::unique_ptr<SessionParts> parts) : parts(std::move(parts)) {}

Session::~Session() {
  parts->robot->setListener(nullptr);
  parts->driver.stop();
}

Snapshot Session::look() {
  SessionRobot& robot = *parts->robot;
  notePlace(*parts);
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
  snapshot.sensors = parts->sensorLook.look();
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

void Session::subscribe(const std::string& subscriber, const std::set<std::string>& names) {
  xTell({"subscribe", subscriber, names, true});
  parts->switches.subscribe(subscriber, names);
}

void Session::unsubscribe(const std::string& subscriber, const std::set<std::string>& names) {
  xTell({"subscribe", subscriber, names, false});
  parts->switches.unsubscribe(subscriber, names);
}

void Session::enable(const std::string& name, bool on) {
  xTell({"enable", {}, {name}, on});
  parts->switches.enable(name, on);
}

void Session::diagnose(const std::string& sensor, bool success) {
  xTell({"diagnose", {}, {sensor}, success});
  parts->switches.diagnose(sensor, success);
}

void Session::setDemand(const Demand& demand) {
  parts->demand.set(demand,
                    [this](const std::string& subscriber, const std::string& sensor, bool on) {
                      xTell({"subscribe", subscriber, {sensor}, on});
                    });
}

void Session::drive(float forward, float turn) {
  xTell({"drive", {}, {}, true, {forward, turn}});
  parts->driver.drive(forward, turn);
}

void Session::drive(const Math::Pose2D& velocity, ko::Duration hold) {
  SessionCommand command{"drive", {}, {}, true, {velocity.x, velocity.theta}};
  if (velocity.y != 0.0f) command.values.push_back(velocity.y);
  xTell(command);
  parts->driver.drive(velocity, hold);
}

void Session::setGoal(const Math::Position2D& position) {
  xTell({"goal", {}, {}, true, {position.x, position.y}});
  parts->driver.setGoal(position);
}

double Session::follow(const std::vector<Math::Position2D>& path, double speed, double turnSpeed) {
  const TimedPath follower(path, speed, turnSpeed);
  SessionCommand command{"follow", {}, {}, true, {speed, turnSpeed}};
  for (const Math::Position2D& corner : path) {
    command.values.insert(command.values.end(), {corner.x, corner.y});
  }
  xTell(command);
  parts->driver.follow(follower);
  return follower.getDuration();
}

void Session::wander() {
  xTell({"wander"});
  parts->driver.wander();
}

void Session::stop() {
  xTell({"stop"});
  parts->driver.stop();
}

void Session::setPose(const Math::Pose2D& pose) {
  xTell({"pose", {}, {}, true, {pose.x, pose.y, pose.theta}});
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
  xTell(commandOf(fault));
  virtualOf(*parts).setFault(fault);
}

void Session::clearFault(const std::string& sensor) {
  xTell({"fault", {}, {sensor}, false});
  virtualOf(*parts).clearFault(sensor);
}

void Session::run(ko::Duration duration) {
  xAdvance(ko::Clock::now() + std::max(duration, ko::Duration::zero()));
}

ko::Duration Session::getSettlingTime() const {
  return parts->robot->getSettlingTime();
}

bool Session::step() {
  if (!parts->robot->isRecording()) {
    run(Pacing::kStep);
    return true;
  }
  do {
    const auto due = parts->robot->getNextStep();
    if (!due) return false;
    goTo(*parts, *due);
    parts->robot->makeStep();
  } while (parts->robot->isAmidSteps());
  note(*parts);
  return true;
}

double Session::getShareDone() const {
  return parts->robot->getShareDone();
}

std::optional<ko::Duration> Session::getLength() const {
  return parts->robot->getLength();
}

void Session::seek(ko::Duration sinceStart) {
  if (!getLength()) throw UsageError("a recording expected, a " + getTitle() + " given");
  const auto target = [&] { return parts->robot->getStart() + sinceStart; };
  if (target() < ko::Clock::now()) xReopen();
  run(target() - ko::Clock::now());
}

// Only one simulated time can be at a time: what may fail comes before the old one ends.
void Session::xReopen() {
  if (!parts->reopen) throw UsageError("a recording that can be played again expected");
  const Reopen reopen = parts->reopen;
  const auto make = reopen();
  const Pacing pacing = parts->pacing;
  const auto listeners = parts->listeners;
  parts->robot->setListener(nullptr);
  parts.reset();
  TimedRobot made = make();
  parts = std::make_unique<SessionParts>(std::move(made.time), std::move(made.robot));
  parts->reopen = reopen;
  parts->pacing = pacing;
  parts->listeners = listeners;
  listeners->listenTo(*parts->robot);
}

void Session::keepPace(ko::Duration machine) {
  if (const auto there = parts->robot->catchUp()) {
    parts->driver.release(machine);
    if (!isPaused()) xAdvance(*there);
    return;
  }
  while (machine > ko::Duration::zero()) {
    const ko::Duration part = std::min(machine, kSlice);
    machine -= part;
    parts->driver.release(part);
    run(parts->pacing.scale(part));
    // Nothing comes after the end of a recording.
    if (getLength() && !parts->robot->getNextStep()) pause(true);
  }
}

void Session::pause(bool on) {
  parts->pacing.pause(on);
}

bool Session::isPaused() const {
  return parts->pacing.isPaused();
}

void Session::setSpeed(double speed) {
  parts->pacing.setSpeed(speed);
}

void Session::addListener(SessionListener& listener) {
  parts->listeners->add(listener, *parts->robot);
}

void Session::removeListener(SessionListener& listener) {
  parts->listeners->remove(listener, *parts->robot);
}

void Session::xTell(const SessionCommand& command) const {
  parts->listeners->onCommand(command);
}

void Session::xAdvance(ko::Clock::time_point end) {
  for (auto now = ko::Clock::now(); now < end; now = ko::Clock::now()) {
    const ko::Duration part =
        std::min<ko::Duration>(end - now, kSlice - now.time_since_epoch() % kSlice);
    if (!parts->robot->awaitTime(now + part)) break;
    parts->driver.steer(part);
    goOnTo(*parts, now + part);
    note(*parts);
  }
  parts->driver.steer(ko::Duration::zero());
}

}  // namespace QV::session
