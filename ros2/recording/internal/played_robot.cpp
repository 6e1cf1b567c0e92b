#include "ros2/recording/internal/played_robot.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "platform/ko/log.h"
#include "ros2/recording/internal/conversions.h"
#include "ros2/recording/internal/played_drivers.h"
#include "ros2/recording/internal/played_poses.h"
#include "session/usage_error.h"

namespace QV::ros2 {

PlayedRobot::PlayedRobot(std::unique_ptr<RunReader> reader) : reader(std::move(reader)) {}

void PlayedRobot::setPose(const Math::Pose2D&) {
  throw session::UsageError("a robot that can be moved expected, a recording given");
}

void PlayedRobot::drive(const Math::Pose2D& velocity) {
  if (velocity == Math::Pose2D()) return;
  throw session::UsageError("a robot that can be driven expected, a recording given");
}

void PlayedRobot::follow(const session::PathFollower&, double) {
  throw session::UsageError("a robot that can be driven expected, a recording given");
}

std::optional<ko::Clock::time_point> PlayedRobot::getNextStep() const {
  if (!reader->readEvent()) return std::nullopt;
  return reader->events.front().time;
}

void PlayedRobot::makeStep() {
  isAtLook = false;
  if (!reader->readEvent()) return;
  RunEvent event = std::move(reader->events.front());
  reader->events.pop_front();
  switch (event.sort) {
    case RunEvent::Sort::command:
      return xExecute(event.command);
    case RunEvent::Sort::pose:
      return xMoveTo(event.pose);
    case RunEvent::Sort::look:
      recorded = std::move(event.records);
      isAtLook = true;
  }
}

// What was refused then is refused again, and what hardware threw may be thrown again.
void PlayedRobot::xExecute(const qv_msgs::Command& command) {
  sensor::SensorManager& manager = getManager();
  const std::set<std::string> names(command.sensors.begin(), command.sensors.end());
  try {
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

double PlayedRobot::getShareDone() const {
  const BagTimes times = reader->getBag().getTimes();
  const auto whole = static_cast<double>(times.end - times.start);
  const auto done =
      static_cast<double>(logTimeOf(ko::Clock::now())) - static_cast<double>(times.start);
  return whole > 0.0 ? std::clamp(done / whole, 0.0, 1.0) : 1.0;
}

const std::vector<Math::MetricalData>* PlayedRobot::getRecorded() const {
  return isAtLook ? &recorded : nullptr;
}

std::unique_ptr<PlayedRobot> makePlayedRobot(std::unique_ptr<RunReader> reader) {
  if (reader->getFacts().sort.starts_with("simulated "))
    return std::make_unique<PlayedPoses>(std::move(reader));
  return std::make_unique<PlayedDrivers>(std::move(reader));
}

}  // namespace QV::ros2
