#include "session/live_world.h"

#include <algorithm>
#include <exception>
#include <utility>
#include <variant>

#include "platform/ko/log.h"
#include "sensor/core/scoped_subscription.h"
#include "session/usage_error.h"

namespace QV::session {
namespace {

constexpr char kSubscriber[] = "live view";
// Simulated: the robot is steered whenever so much has gone by, and at the end of a run.
constexpr ko::Duration kSlice{20'000'000};
// So long a touch is shown that is over.
constexpr ko::Duration kTouchShown{1'000'000'000};

}  // namespace

LiveWorld::LiveWorld(Session& robot, ko::SimulatedTime& time)
    : robot(robot),
      time(time),
      manager(robot.getManager()),
      driver(robot),
      demand(manager),
      sensorLook(robot) {
  sensorLook.notePose();
}

LiveWorld::~LiveWorld() {
  sensor::unsubscribeGuarded(manager, kSubscriber, manager.getSensorList());
  driver.stop();
}

void LiveWorld::xTell(const std::string& name, const std::string& what) const {
  std::string text = name + ' ' + what;
  if (manager.isSensor(name)) text += manager.isSensorStarted(name) ? ": started" : ": stopped";
  ko::log::info("LiveView", "execute") << text;
}

void LiveWorld::execute(const Command& command) {
  std::visit([this](const auto& kind) { xDo(kind); }, command);
}

void LiveWorld::xDo(const SubscribeCommand& command) {
  if (command.on) {
    manager.subscribe(kSubscriber, command.sensor);
  } else {
    manager.unsubscribe(kSubscriber, command.sensor);
  }
  xTell(command.sensor, command.on ? "subscribed" : "unsubscribed");
}

// Only subscriptions start and stop the refresh of the records: one to nothing makes it look again.
void LiveWorld::xDo(const EnableCommand& command) {
  manager.enableSensorOrFamily(command.sensor, command.on);
  manager.subscribe(kSubscriber, std::set<std::string>());
  xTell(command.sensor, command.on ? "enabled" : "disabled");
}

void LiveWorld::xDo(const DiagnoseCommand& command) {
  manager.setSensorDiagnosis(command.sensor, command.value);
  manager.subscribe(kSubscriber, std::set<std::string>());
  xTell(command.sensor, command.value ? "diagnosis good" : "diagnosis bad");
}

void LiveWorld::xDo(const DriveCommand& command) {
  driver.drive(command.forward, command.turn);
}

void LiveWorld::xDo(const GoalCommand& command) {
  driver.setGoal(command.position);
}

void LiveWorld::xDo(const StopCommand&) {
  driver.stop();
}

void LiveWorld::xDo(const PauseCommand& command) {
  pacing.pause(command.on);
}

void LiveWorld::xDo(const StepCommand&) {
  if (!pacing.isPaused()) throw UsageError("a paused world expected; pause it first");
  xAdvance(Pacing::kStep);
}

void LiveWorld::xDo(const SpeedCommand& command) {
  pacing.setSpeed(command.value);
}

void LiveWorld::run(ko::Duration machine) {
  while (machine > ko::Duration::zero()) {
    const ko::Duration part = std::min(machine, kSlice);
    machine -= part;
    driver.release(part);
    xAdvance(pacing.scale(part));
  }
}

void LiveWorld::xAdvance(ko::Duration simulated) {
  while (simulated > ko::Duration::zero()) {
    const auto now = ko::Clock::now().time_since_epoch();
    const ko::Duration part = std::min<ko::Duration>(simulated, kSlice - now % kSlice);
    simulated -= part;
    driver.steer(part);
    time.advance(part);
    sensorLook.notePose();
    sensorLook.noteMeasurements();
    xNoteTouches();
  }
}

void LiveWorld::xNoteTouches() {
  const auto now = ko::Clock::now();
  for (const auto& [name, position] : robot.getTouches()) {
    const auto [touch, isNew] = touches.try_emplace(name, Touch{position, now, now});
    if (isNew) ko::log::info("LiveView", "xNoteTouches") << name << " touched";
    const bool goesOn = now - touch->second.last <= 2 * kSlice;
    touch->second = {position, goesOn ? touch->second.began : now, now};
  }
  std::erase_if(touches,
                [now](const auto& entry) { return now - entry.second.last > kTouchShown; });
}

Snapshot LiveWorld::look() {
  Snapshot snapshot;
  snapshot.time = ko::Clock::now();
  snapshot.paused = pacing.isPaused();
  snapshot.speed = pacing.getSpeed();
  snapshot.pose = robot.getPose();
  snapshot.velocity = robot.getVelocity();
  snapshot.goal = driver.getGoal();
  snapshot.sensors = sensorLook.look();
  snapshot.title = robot.getTitle();
  snapshot.frame = robot.getFrame();
  snapshot.map = robot.getSharedMap();
  snapshot.people = robot.getPeople();
  for (const auto& [name, touch] : touches) {
    const boost::chrono::duration<double> since = snapshot.time - touch.began;
    snapshot.touches.push_back({name, touch.position, since.count()});
  }
  return snapshot;
}

}  // namespace QV::session
