#include "session/internal/recorded_session_robot.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <boost/make_shared.hpp>

#include "platform/model/model_utils.h"
#include "robot/services/internal/input_listener.h"
#include "robot/services/internal/memory_service.h"
#include "robot/services/internal/robot_model_service.h"
#include "session/usage_error.h"

namespace QV::session {
namespace {

// Lidar logs are lines of messages by name, sonar logs lines of numbers.
bool startsWithNumber(const std::string& path) {
  std::ifstream file(path);
  file >> std::ws;
  while (file.peek() == '#') {
    file.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
    file >> std::ws;
  }
  const int first = file.peek();
  return first == '-' || std::isdigit(first) != 0;
}

std::string posesBeside(const std::string& path) {
  auto poses = std::filesystem::path(path).replace_filename("poses.txt").string();
  std::error_code error;
  if (std::filesystem::exists(poses, error)) return poses;
  throw UsageError(path + ": a sonar log needs a file of poses; give it with --poses");
}

}  // namespace

robot::Recording readLog(const std::string& path, const std::optional<std::string>& posesPath) {
  if (!startsWithNumber(path)) return robot::readLidarLog(path);
  return robot::readSonarLog(path, posesPath ? *posesPath : posesBeside(path));
}

RecordedSessionRobot::RecordedSessionRobot(const robot::Recording& recording)
    : description(recording.toDescription()),
      model(Model::ModelUtils::robotFromXml(description)),
      memory(boost::make_shared<robot::MemoryService>(broker)),
      devices(boost::make_shared<robot::DeviceManager>(broker)),
      motion(boost::make_shared<robot::MotionService>(model)) {
  broker->registerModule(memory);
  broker->registerModule(devices);
  broker->registerModule(motion);
  broker->registerModule(boost::make_shared<robot::RobotModelService>(description));
  replay = std::make_unique<robot::LogReplay>(recording, broker, motion);
  laserModes = robot::makeLaserModes(broker, devices, model);
  navigation = boost::make_shared<sensor::NavigationModule>(broker);
  // Sensors can't start before the memory has their keys.
  replay->next();
}

std::vector<Math::MetricalData> RecordedSessionRobot::getRecords() {
  std::vector<Math::MetricalData> records;
  const auto& manager = navigation->getManager();
  for (const std::string& name : manager.getSensorList()) {
    std::ranges::move(manager.getSensorPtr(name)->getData(), std::back_inserter(records));
  }
  return records;
}

void RecordedSessionRobot::setPose(const Math::Pose2D&) {
  throw UsageError("a recording can't be moved or driven");
}

void RecordedSessionRobot::drive(const Math::Pose2D& velocity) {
  if (velocity == Math::Pose2D()) return;
  throw UsageError("a recording can't be moved or driven");
}

void RecordedSessionRobot::follow(const TimedPath&, double) {
  throw UsageError("a recording can't be moved or driven");
}

std::optional<ko::Clock::time_point> RecordedSessionRobot::getNextStep() const {
  return replay->getNextTime();
}

void RecordedSessionRobot::makeStep() {
  replay->next();
  xTellStep();
}

void RecordedSessionRobot::xTellStep() {
  const Math::Pose2D pose = replay->getPose();
  if (listener) listener->onStep({pose, pose, motion->getRobotVelocity()});
}

void RecordedSessionRobot::setListener(SessionListener* newListener) {
  listener = newListener;
  memory->setListener(newListener);
  xTellStep();
}

double RecordedSessionRobot::getShareDone() const {
  return static_cast<double>(replay->getStepsMade()) / static_cast<double>(replay->getStepCount());
}

}  // namespace QV::session
