#include "robot/logs/internal/log_replay.h"

#include <cmath>
#include <cstdint>
#include <numbers>
#include <stdexcept>

#include "platform/middleware/contracts/device_manager_contract.h"
#include "platform/model/sensor_properties.h"
#include "robot/services/internal/motion_service.h"

namespace QV::robot {
namespace {

constexpr boost::chrono::milliseconds kScanDelay(DeviceManagerContract::kScanDelay);

}  // namespace

LogReplay::LogReplay(Recording played, const boost::shared_ptr<QVBroker>& broker,
                     const boost::shared_ptr<MotionService>& motion)
    : recording(std::move(played)), memory(broker), motion(motion), start(ko::Clock::now()) {
  for (const Model::SensorConfig& sensor : recording.sensors) {
    valueKeys.insert(valueKeys.end(), sensor.memoryKeys.begin(), sensor.memoryKeys.end());
    const Model::SensorProperties properties(sensor);
    if (properties.has("timestamp")) timeKeys.push_back(properties.getText("timestamp"));
  }
  for (const RecordedStep& step : recording.steps) {
    if (step.values.size() == valueKeys.size()) continue;
    throw std::invalid_argument("LogReplay: " + std::to_string(valueKeys.size()) +
                                " values in each step expected, " +
                                std::to_string(step.values.size()) + " given");
  }
}

LogReplay::~LogReplay() = default;

std::optional<ko::Clock::time_point> LogReplay::getNextTime() const {
  if (stepsMade == recording.steps.size()) return std::nullopt;
  return start + recording.steps[stepsMade].time;
}

bool LogReplay::next() {
  const auto due = getNextTime();
  if (!due) return false;
  const RecordedStep& step = recording.steps[stepsMade];
  for (std::size_t i = 0; i < valueKeys.size(); ++i) {
    memory.insertData(valueKeys[i], step.values[i]);
  }
  const std::int32_t published = ko::Clock::toInt32ms(*due + kScanDelay);
  for (const std::string& key : timeKeys) memory.insertData(key, published);
  motion->setRobotVelocity(xVelocityTo(step));
  pose = step.pose;
  ++stepsMade;
  return true;
}

// Steps of the same time say nothing about it.
Math::Pose2D LogReplay::xVelocityTo(const RecordedStep& step) const {
  if (stepsMade == 0) return {};
  const ko::Duration elapsed = step.time - recording.steps[stepsMade - 1].time;
  if (elapsed <= ko::Duration::zero()) return motion->getRobotVelocity();
  const float seconds = boost::chrono::duration<float>(elapsed).count();
  const Math::Pose2D moved = Math::pinv(pose) * step.pose;
  const float turned = std::remainder(moved.theta, 2.0f * std::numbers::pi_v<float>);
  return {moved.x / seconds, moved.y / seconds, turned / seconds};
}

}  // namespace QV::robot
