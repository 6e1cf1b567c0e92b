#include "session/internal/simulated_session_robot.h"

#include <algorithm>
#include <utility>

#include <boost/make_shared.hpp>

#include "platform/ko/log.h"
#include "sensor/simulation/internal/robot_model_mock.h"
#include "session/internal/timed_path.h"
#include "session/usage_error.h"

namespace QV::session {
namespace {

constexpr ko::Duration kDrivingPeriod{20'000'000};

}  // namespace

SimulatedSessionRobot::SimulatedSessionRobot(int kind, boost::shared_ptr<OccupancyMap> givenMap,
                                             const Math::Pose2D& start)
    : kind(kind),
      map((checkKind(kind), std::move(givenMap))),
      manager(boost::make_shared<sensor::SimulatedSensorManager>(kind, map.get())),
      navigation(manager) {
  SimulatedSessionRobot::setPose(start);
}

std::string SimulatedSessionRobot::getTitle() const {
  return "Simulated robot of kind " + std::to_string(kind);
}

void SimulatedSessionRobot::follow(const TimedPath& path, double seconds) {
  setPose(path.poseAt(seconds));
}

// Records then carry the pose that rays are cast from.
void SimulatedSessionRobot::setPose(const Math::Pose2D& newPose) {
  pose = newPose;
  manager->setPose2D(pose, pose);
}

void SimulatedSessionRobot::drive(const Math::Pose2D& newCommand) {
  command = newCommand;
  // A robot that never drove has nothing to stop.
  if (driving.isRunning() || command == Math::Pose2D()) return;
  room = std::make_unique<RouteCells>(*map, 2.0f * getRadius());
  driving.setName("Driving");
  driving.setPeriod(kDrivingPeriod);
  driving.compensateCallbackTime(true);
  driving.setCallback([this] { xMove(); });
  driving.start(false);
}

// A robot that is too near to an obstacle may move as long as it does not get nearer.
void SimulatedSessionRobot::xMove() {
  const float seconds = boost::chrono::duration<float>(kDrivingPeriod).count();
  const float turn = command.theta * seconds;
  const auto roomAt = [this](const Math::Pose2D& at) {
    return room->findRoom(Math::position2DFromPose2D(at));
  };
  const Math::Pose2D moved = pose * Math::Pose2D(command.x * seconds, command.y * seconds, turn);
  const bool free = roomAt(moved) >= std::min(getRadius(), roomAt(pose));
  velocity = free ? command : Math::Pose2D(0.0f, 0.0f, command.theta);
  setPose(free ? moved : pose * Math::Pose2D(0.0f, 0.0f, turn));
}

void checkKind(int kind) {
  if (sensor::RobotModelMock::hasSensors(kind)) return;
  throw UsageError("a kind with simulated sensors (-1, 0 or 1) expected, " + std::to_string(kind) +
                   " given");
}

}  // namespace QV::session
