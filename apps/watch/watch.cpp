#include "apps/watch/watch.h"

#include <algorithm>
#include <map>

#include "sensor/core/scoped_subscription.h"
#include "session/internal/nearest_obstacle.h"
#include "session/internal/record_owner.h"
#include "session/internal/seconds.h"

namespace QV::app {
namespace {

constexpr char kSubscriber[] = "qvsensors";

template <typename T>
void keep(std::optional<T>& kept, T value, bool better) {
  if (!kept || better) kept = value;
}

}  // namespace

Watch::Watch(session::Session& robot) : robot(robot), manager(robot.getManager()) {
  state.title = robot.getTitle();
  for (const std::string& name : manager.getSensorList()) {
    state.sensors.push_back({name, manager.getSensorPtr(name)->getFamilyName()});
  }
}

Watch::~Watch() {
  if (action.valid()) action.wait();
  sensor::unsubscribeGuarded(manager, kSubscriber, manager.getSensorList());
}

void Watch::subscribe(const std::set<std::string>& names) {
  xDo("subscribed", [this, names] { manager.subscribe(kSubscriber, names); });
}

bool Watch::press(Key key) {
  if (key == Key::quit) return false;
  if (key == Key::up) xChoose(-1);
  if (key == Key::down) xChoose(1);
  xNoteEnd();
  if (action.valid() || state.sensors.empty()) return true;
  const WatchedSensor& sensor = state.sensors[state.chosen];
  if (key == Key::subscribe) xSwitchSubscription(sensor.name);
  if (key == Key::enable) xEnable(sensor.name, !manager.isSensorEnabled(sensor.name));
  if (key == Key::diagnose) xDiagnose(sensor.name, !manager.isSensorDiagnosisSuccess(sensor.name));
  return true;
}

void Watch::xSwitchSubscription(const std::string& name) {
  if (manager.isSensorSubscribedBy(name, kSubscriber)) {
    xDo(name + ": unsubscribed", [this, name] { manager.unsubscribe(kSubscriber, name); });
  } else {
    xDo(name + ": subscribed", [this, name] { manager.subscribe(kSubscriber, name); });
  }
}

// Only subscriptions start and stop the refresh of the records: one to nothing makes it look again.
void Watch::xEnable(const std::string& name, bool enable) {
  xDo(name + (enable ? ": enabled" : ": disabled"), [this, name, enable] {
    manager.enableSensorOrFamily(name, enable);
    manager.subscribe(kSubscriber, std::set<std::string>());
  });
}

void Watch::xDiagnose(const std::string& name, bool success) {
  xDo(name + (success ? ": diagnosis set to good" : ": diagnosis set to bad"),
      [this, name, success] {
        manager.setSensorDiagnosis(name, success);
        manager.subscribe(kSubscriber, std::set<std::string>());
      });
}

void Watch::xChoose(int step) {
  const int last = static_cast<int>(state.sensors.size()) - 1;
  state.chosen = static_cast<std::size_t>(
      std::clamp(static_cast<int>(state.chosen) + step, 0, std::max(last, 0)));
}

void Watch::xDo(const std::string& what, std::function<void()> wanted) {
  state.note = what;
  action = std::async(std::launch::async, std::move(wanted));
}

void Watch::xNoteEnd() {
  const auto now = std::chrono::seconds::zero();
  if (!action.valid() || action.wait_for(now) != std::future_status::ready) return;
  try {
    action.get();
  } catch (const std::exception& exception) {
    state.note = exception.what();
  }
}

const WatchState& Watch::look() {
  xNoteEnd();
  state.pose = robot.getPose();
  for (WatchedSensor& sensor : state.sensors) xLookAtSwitches(sensor);
  xLookAtRecords();
  return state;
}

void Watch::xLookAtSwitches(WatchedSensor& sensor) {
  sensor.enabled = manager.isSensorEnabled(sensor.name);
  sensor.diagnosis = manager.isSensorDiagnosisSuccess(sensor.name);
  sensor.started = manager.isSensorStarted(sensor.name);
  // A sensor that is being started would keep us waiting.
  if (!action.valid()) {
    sensor.subscribers = manager.getSensorPtr(sensor.name)->getSubscribers().size();
  }
  const auto trouble = robot.getNavigation().getLastTrouble().get(sensor.name);
  if (!trouble) return;
  sensor.trouble = trouble->message;
  sensor.troubleAge = session::inSeconds(ko::Clock::now() - trouble->timestamp);
}

void Watch::xLookAtRecords() {
  std::map<std::string, WatchedSensor*> byName;
  for (WatchedSensor& sensor : state.sensors) {
    sensor.points = 0;
    sensor.nearest.reset();
    sensor.age.reset();
    byName[sensor.name] = &sensor;
  }
  for (const auto& record : manager.getMetricalData()) {
    const auto found = byName.find(session::sensorOf(record, manager));
    if (found == byName.end()) continue;
    WatchedSensor& sensor = *found->second;
    sensor.points += record.points.size();
    const double age = session::inSeconds(Math::age(record, ko::Clock::now()));
    keep(sensor.age, age, age > sensor.age.value_or(age));
    const auto nearest = session::nearestObstacle(record);
    if (nearest) keep(sensor.nearest, *nearest, *nearest < sensor.nearest.value_or(*nearest));
  }
}

}  // namespace QV::app
