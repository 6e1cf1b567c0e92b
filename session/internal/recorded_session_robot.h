#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "robot/logs/internal/log_replay.h"
#include "robot/services/internal/device_manager.h"
#include "robot/services/internal/laser_mode_actuator.h"
#include "robot/services/internal/memory_service.h"
#include "robot/services/internal/motion_service.h"
#include "sensor/hosting/navigation_module.h"
#include "session/internal/session_listener.h"
#include "session/internal/session_robot.h"

namespace QV::session {

/**
 * A log of a lidar (CARMEN) or of sonars; the content tells which. A sonar log needs poses from
 * `posesPath` or, without it, from poses.txt beside the log. Throws std::runtime_error, with file
 * and line, for a bad file.
 */
robot::Recording readLog(const std::string& path, const std::optional<std::string>& posesPath);

/**
 * A recorded robot: its log plays to the sensors that the library creates from its description. It
 * stands at the first step at first. It can't be driven or moved: UsageError.
 */
class RecordedSessionRobot : public SessionRobot {
 public:
  explicit RecordedSessionRobot(const robot::Recording& recording);

  sensor::NavigationModule& getNavigation() override { return *navigation; }
  /** Reads each sensor by itself: the manager's refresh would miss steps, or read others twice. */
  std::vector<Math::MetricalData> getRecords() override;
  const Model::Robot* getDescription() const override { return &model; }

  std::string getSort() const override { return "log"; }
  std::string getTitle() const override { return "Recorded robot " + model.name; }
  Frame getFrame() const override { return Frame::robot; }
  boost::shared_ptr<const OccupancyMap> getMap() const override { return nullptr; }
  /** Returns the pose in the log's own frame. */
  Math::Pose2D getPose() const override { return replay->getPose(); }
  void setPose(const Math::Pose2D& newPose) override;
  float getRadius() const override { return 0.25f; }

  void drive(const Math::Pose2D& velocity) override;
  void follow(const TimedPath& path, double seconds) override;
  boost::shared_ptr<QVBroker> getBroker() const override { return broker; }

  std::optional<ko::Clock::time_point> getNextStep() const override;
  void makeStep() override;
  void setListener(SessionListener* newListener) override;
  bool isRecording() const override { return true; }
  double getShareDone() const override;

 private:
  void xTellStep();

  const boost::shared_ptr<QVBroker> broker = QVBroker::create();
  const std::string description;
  const Model::Robot model;
  const boost::shared_ptr<robot::MemoryService> memory;
  const boost::shared_ptr<robot::DeviceManager> devices;
  const boost::shared_ptr<robot::MotionService> motion;
  robot::LaserModes laserModes;
  std::unique_ptr<robot::LogReplay> replay;
  boost::shared_ptr<sensor::NavigationModule> navigation;
  SessionListener* listener = nullptr;
};

}  // namespace QV::session
