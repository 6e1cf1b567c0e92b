#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "platform/ko/simulated_time.h"
#include "robot/logs/log_replay.h"
#include "robot/services/device_manager.h"
#include "robot/services/laser_mode_actuator.h"
#include "robot/services/motion_service.h"
#include "sensor/hosting/navigation_module.h"

namespace QV::session {

/**
 * A log of a lidar (CARMEN) or of sonars, which its content tells: those are of two files, the
 * poses in `posesPath` or, without one, in poses.txt beside the log. Bad ones: std::runtime_error
 * with file and line.
 */
robot::Recording readLog(const std::string& path, const std::optional<std::string>& posesPath);

/** A recorded robot: its log plays to the sensors that the library makes of its description. */
class RecordedRobot {
 public:
  explicit RecordedRobot(const robot::Recording& recording);

  /** Waits for the next step; what the sensors make of it, or nothing at the end. */
  std::optional<std::vector<Math::MetricalData>> next(ko::SimulatedTime& time);

  /** Where the robot is, in the log's own frame. */
  Math::Pose2D getPose() const { return replay->getPose(); }
  double getShareDone() const;

 private:
  void xAddLaserModes();
  void xSubscribe();

  const boost::shared_ptr<QVBroker> broker = QVBroker::create();
  const std::string description;
  const Model::Robot model;
  const boost::shared_ptr<robot::DeviceManager> devices;
  const boost::shared_ptr<robot::MotionService> motion;
  std::map<std::string, std::unique_ptr<robot::LaserModeActuator>> laserModes;
  std::unique_ptr<robot::LogReplay> replay;
  boost::shared_ptr<sensor::NavigationModule> navigation;
};

}  // namespace QV::session
