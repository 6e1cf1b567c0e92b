#include "ros2/recording/internal/played_robot.h"

#include <exception>
#include <stdexcept>
#include <utility>

#include "platform/ko/log.h"
#include "ros2/recording/internal/conversions.h"
#include "ros2/recording/internal/played_drivers.h"
#include "ros2/recording/internal/played_poses.h"
#include "session/internal/session_listener.h"

namespace QV::ros2 {
namespace {

// The beats of all sensors go on in a gap; in one that is none this would take for ever.
constexpr ko::Duration kLongestGap{3'600'000'000'000};
// More sensors and subscribers than any session has.
constexpr std::size_t kMostNames = 100'000;
constexpr std::size_t kLongestKept = 256;

/** Keeps a name for as long as the session lasts; one too many: std::runtime_error. */
void keep(std::set<std::string>& names, const std::string& name) {
  if (names.contains(name)) return;
  if (names.size() >= kMostNames || name.size() > kLongestKept)
    throw std::runtime_error("up to " + std::to_string(kMostNames) + " names of up to " +
                             std::to_string(kLongestKept) + " letters expected, more given");
  names.insert(name);
}

}  // namespace

PlayedRobot::PlayedRobot(std::unique_ptr<SessionReader> reader) : reader(std::move(reader)) {}

std::optional<ko::Clock::time_point> PlayedRobot::getNextStep() const {
  if (!reader->readEvent()) return std::nullopt;
  const auto due = reader->events.front().time;
  if (due - ko::Clock::now() > kLongestGap)
    throw std::runtime_error("a recording expected without a gap of more than an hour, one at " +
                             std::to_string(logTimeOf(due)) + " ns given");
  return due;
}

void PlayedRobot::makeStep() {
  isAtLook = false;
  if (!reader->readEvent()) return;
  SessionEvent event = std::move(reader->events.front());
  reader->events.pop_front();
  switch (event.sort) {
    case SessionEvent::Sort::command:
      return xExecute(event.command);
    case SessionEvent::Sort::pose:
      return xMoveTo(event.pose);
    case SessionEvent::Sort::look:
      recorded = std::move(event.records);
      for (const auto& record : recorded) keep(seen, record.sensorName);
      isAtLook = true;
  }
}

// A command that was refused is refused again, and an exception of hardware may come again.
void PlayedRobot::xExecute(const qv_msgs::Command& command) {
  sensor::SensorManager& manager = getManager();
  const std::set<std::string> names(command.sensors.begin(), command.sensors.end());
  if (listener)
    listener->onCommand({command.name, command.subscriber, names, command.on, command.values});
  try {
    keep(subscribers, command.subscriber);
    if (command.name == "subscribe" && command.on) manager.subscribe(command.subscriber, names);
    if (command.name == "subscribe" && !command.on) manager.unsubscribe(command.subscriber, names);
    for (const std::string& name : names) {
      if (command.name == "enable") manager.enableSensorOrFamily(name, command.on);
      if (command.name == "diagnose") manager.setSensorDiagnosis(name, command.on);
      if (command.name == "enable" || command.name == "diagnose") manager.lookAgain();
    }
  } catch (const std::exception& error) {
    ko::log::warning("Recording", "play") << command.name << ": " << error.what();
  }
}

ko::Clock::time_point PlayedRobot::getStart() const {
  return timeOf(getBag().getTimes().start);
}

const std::vector<Math::MetricalData>* PlayedRobot::getRecorded() const {
  return isAtLook ? &recorded : nullptr;
}

std::unique_ptr<PlayedRobot> makePlayedRobot(std::unique_ptr<SessionReader> reader,
                                             const sensor::SensorFactory& sensors) {
  if (reader->getFacts().sort.starts_with("simulated "))
    return std::make_unique<PlayedPoses>(std::move(reader));
  return std::make_unique<PlayedDrivers>(std::move(reader), sensors);
}

}  // namespace QV::ros2
