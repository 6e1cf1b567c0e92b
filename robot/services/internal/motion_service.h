#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "platform/api.h"
#include "platform/ko/clock.h"
#include "platform/math/pose2d.h"
#include "platform/math/transform.h"
#include "platform/middleware/contracts/motion_contract.h"
#include "platform/middleware/qv_module.h"
#include "platform/model/robot.h"

namespace QV::robot {

class Kinematics;
class PostureHistory;

/**
 * The module "QVMotion": where the parts of the robot are and how it moves. QVMotionProxy says what
 * its methods do; "_getSensorTransformAtTime" is getTransformAtTime(). Whoever measures the joints
 * sets them here; a joint never set stands at 0. It writes no memory key. Thread-safe; wrong
 * arguments throw std::invalid_argument and change nothing.
 */
class QV_API MotionService : public QVModule {
 public:
  /** Frame 0: the description's body link. */
  static constexpr int kBodyFrame = MotionContract::kBodyFrame;
  /** Frame 1: on the ground beneath the robot, and moving with it. */
  static constexpr int kGroundFrame = MotionContract::kGroundFrame;

  explicit MotionService(const Model::Robot& robot);
  ~MotionService() override;

  /**
   * The measured positions of some joints as of now, radians or metres; the others stay. For joints
   * that move by themselves only: mimics follow.
   */
  void setJointPositions(const std::map<std::string, double>& positions);
  /** Sets where joints are to go. One without a command counts as commanded where it was
   * measured. */
  void setJointCommands(const std::map<std::string, double>& positions);
  /** The root link in the ground frame, as of now; the identity at start. */
  void setGroundPose(const Math::Transform& rootInGround);
  /** Forward and leftward in m/s, turning in rad/s; 0 at start. */
  void setRobotVelocity(const Math::Pose2D& velocity);

  /** The frame of a sensor, else a joint, else a link of that name, in `frame` (0 or 1) now. */
  Math::Transform getTransform(const std::string& name, int frame, bool useSensorValues) const;

  /**
   * The same in the ground frame at a time of the last second at least, with positions interpolated
   * linearly between measurements. The first measurement holds for the time before it, from 1 s
   * before this service was made; the newest up to now, and 100 ms ahead. Other times:
   * std::out_of_range.
   */
  Math::Transform getTransformAtTime(const std::string& name, ko::Clock::time_point time) const;

  Math::Pose2D getRobotVelocity() const;

 private:
  void xBindMethods();
  std::map<std::size_t, double> xByIndex(const std::map<std::string, double>& positions) const;

  mutable std::mutex mutex;
  std::unique_ptr<Kinematics> kinematics;
  std::unique_ptr<PostureHistory> history;
  std::map<std::size_t, double> commands;
  Math::Pose2D velocity;
};

}  // namespace QV::robot
