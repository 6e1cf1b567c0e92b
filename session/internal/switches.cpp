#include "session/internal/switches.h"

#include <exception>

#include "platform/ko/log.h"
#include "sensor/core/scoped_subscription.h"
#include "session/internal/sensor_meaning.h"
#include "session/internal/session_robot.h"
#include "session/usage_error.h"

namespace QV::session {
namespace {

std::string joined(const std::set<std::string>& names) {
  std::string result;
  for (const std::string& name : names) result += (result.empty() ? "" : ", ") + name;
  return result;
}

/** Returns the sensor that the part of a description called `name` belongs to; empty if none. */
std::string findWhole(SessionRobot& robot, const std::string& name) {
  const Model::Robot* const description = robot.getDescription();
  if (!description) return {};
  const auto config = description->sensorConfigs.find(name);
  if (config == description->sensorConfigs.end()) return {};
  return findSensorOf(config->second, robot.getKinds(), robot.getManager());
}

/** Counts one more for as long as it lives. */
class Counted {
 public:
  explicit Counted(std::atomic<int>& count) : count(count) { ++count; }
  ~Counted() { --count; }
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;

 private:
  std::atomic<int>& count;
};

}  // namespace

void checkNames(SessionRobot& robot, const std::set<std::string>& names) {
  const sensor::SensorManager& manager = robot.getManager();
  for (const std::string& name : names) {
    if (manager.isFamily(name) || manager.isSensor(name)) continue;
    const std::string whole = findWhole(robot, name);
    if (!whole.empty())
      throw UsageError(name + " is a part of the sensor " + whole + "; name " + whole + " instead");
    throw UsageError("no sensor or family \"" + name + "\"; this robot has the families " +
                     joined(manager.getFamilyNames()) + " and the sensors " +
                     joined(manager.getSensorList()));
  }
}

Switches::Switches(SessionRobot& robot) : robot(robot), manager(robot.getManager()) {}

void Switches::subscribe(const std::string& subscriber, const std::set<std::string>& names) {
  xSwitch(names, "subscribed", [&] { manager.subscribe(subscriber, names); });
}

void Switches::unsubscribe(const std::string& subscriber, const std::set<std::string>& names) {
  xSwitch(names, "unsubscribed", [&] { manager.unsubscribe(subscriber, names); });
}

void Switches::want(const std::string& subscriber, const std::string& sensor, bool on) {
  try {
    xSwitch({sensor}, (on ? "subscribed by " : "unsubscribed by ") + subscriber, [&] {
      if (on) {
        manager.subscribe(subscriber, sensor);
      } else {
        sensor::unsubscribeGuarded(manager, subscriber, {sensor});
      }
    });
  } catch (const std::exception& exception) {
    ko::log::warning("Session", "want")
        << sensor << " for " << subscriber << ": " << exception.what();
  }
}

// These two do not start or stop the refresh by themselves.
void Switches::enable(const std::string& name, bool on) {
  xSwitch({name}, on ? "enabled" : "disabled", [&] {
    manager.enableSensorOrFamily(name, on);
    manager.lookAgain();
  });
}

void Switches::diagnose(const std::string& sensor, bool success) {
  xSwitch({sensor}, success ? "diagnosis good" : "diagnosis bad", [&] {
    manager.setSensorDiagnosis(sensor, success);
    manager.lookAgain();
  });
}

void Switches::xSwitch(const std::set<std::string>& names, const std::string& what,
                       const std::function<void()>& action) {
  checkNames(robot, names);
  const Counted counted(busy);
  action();
  for (const std::string& name : names) {
    std::string text = name + ' ' + what;
    if (manager.isSensor(name)) text += manager.isSensorStarted(name) ? ": started" : ": stopped";
    ko::log::info("Session", "switch") << text;
  }
}

}  // namespace QV::session
