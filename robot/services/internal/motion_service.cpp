#include "robot/services/internal/motion_service.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <utility>
#include <vector>

#include "platform/middleware/contracts/motion_contract.h"
#include "robot/services/internal/kinematics.h"
#include "robot/services/internal/posture_history.h"

namespace QV::robot {

MotionService::MotionService(const Model::Robot& robot)
    : QVModule(MotionContract::kModule), kinematics(std::make_unique<Kinematics>(robot)) {
  const Posture atRest{std::vector<double>(kinematics->getPositionCount()), Math::Transform()};
  history = std::make_unique<PostureHistory>(ko::Clock::now(), atRest);
  xBindMethods();
}

MotionService::~MotionService() = default;

void MotionService::xBindMethods() {
  using namespace MotionContract;
  bindMethod(kGetTransform, [this](const std::string& name, int frame, bool useSensorValues) {
    return getTransform(name, frame, useSensorValues).toVector();
  });
  bindMethod(kGetRobotVelocity, [this] {
    const Math::Pose2D current = getRobotVelocity();
    return std::vector<float>{current.x, current.y, current.theta};
  });
  bindMethod(kGetSensorTransformAtTime,
             [this](const std::string& name, ko::Clock::time_point time) {
               return getTransformAtTime(name, time).toVector();
             });
}

std::map<std::size_t, double> MotionService::xByIndex(
    const std::map<std::string, double>& positions) const {
  std::map<std::size_t, double> result;
  for (const auto& [joint, position] : positions) {
    if (!std::isfinite(position)) {
      throw std::invalid_argument("the position of joint \"" + joint + "\" is not finite");
    }
    result[kinematics->indexOf(joint)] = position;
  }
  return result;
}

void MotionService::setJointPositions(const std::map<std::string, double>& positions) {
  std::lock_guard<std::mutex> lock(mutex);
  Posture posture = history->getNewest();
  for (const auto& [index, position] : xByIndex(positions)) posture.positions[index] = position;
  history->add(ko::Clock::now(), std::move(posture));
}

void MotionService::setJointCommands(const std::map<std::string, double>& positions) {
  std::lock_guard<std::mutex> lock(mutex);
  for (const auto& [index, position] : xByIndex(positions)) commands[index] = position;
}

void MotionService::setGroundPose(const Math::Transform& rootInGround) {
  const auto& values = rootInGround.values;
  if (!std::all_of(values.begin(), values.end(),
                   [](float value) { return std::isfinite(value); })) {
    throw std::invalid_argument("the ground pose is not finite");
  }
  std::lock_guard<std::mutex> lock(mutex);
  Posture posture = history->getNewest();
  posture.rootInGround = rootInGround;
  history->add(ko::Clock::now(), std::move(posture));
}

void MotionService::setRobotVelocity(const Math::Pose2D& newVelocity) {
  if (!std::isfinite(newVelocity.x + newVelocity.y + newVelocity.theta)) {
    throw std::invalid_argument("the velocity is not finite");
  }
  std::lock_guard<std::mutex> lock(mutex);
  velocity = newVelocity;
}

Math::Transform MotionService::getTransform(const std::string& name, int frame,
                                            bool useSensorValues) const {
  if (frame != kBodyFrame && frame != kGroundFrame) {
    throw std::invalid_argument("frame 0 (the body) or 1 (the ground) expected, " +
                                std::to_string(frame) + " given");
  }
  std::lock_guard<std::mutex> lock(mutex);
  Posture posture = history->getNewest();
  if (!useSensorValues) {
    for (const auto& [index, position] : commands) posture.positions[index] = position;
  }
  if (frame == kBodyFrame) return kinematics->poseInBody(posture.positions, name);
  return posture.rootInGround * kinematics->poseInRoot(posture.positions, name);
}

Math::Transform MotionService::getTransformAtTime(const std::string& name,
                                                  ko::Clock::time_point time) const {
  std::lock_guard<std::mutex> lock(mutex);
  const Posture posture = history->at(time, ko::Clock::now());
  return posture.rootInGround * kinematics->poseInRoot(posture.positions, name);
}

Math::Pose2D MotionService::getRobotVelocity() const {
  std::lock_guard<std::mutex> lock(mutex);
  return velocity;
}

}  // namespace QV::robot
