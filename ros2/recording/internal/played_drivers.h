#pragma once

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "platform/ko/periodic_task.h"
#include "platform/middleware/qv_broker.h"
#include "robot/services/internal/device_manager.h"
#include "robot/services/internal/laser_mode_actuator.h"
#include "robot/services/internal/memory_service.h"
#include "robot/services/internal/motion_service.h"
#include "robot/services/internal/sonar_driver.h"
#include "robot/services/video_device.h"
#include "ros2/recording/internal/played_robot.h"
#include "sensor/real/sensor_factory.h"

namespace QV::ros2 {

/**
 * A robot's services, with what its drivers told then in place of its drivers, and the library's
 * sensors on them. Everything that measured by a beat does so by the same beat, begun in the same
 * order: at one moment a sensor reads what it read then.
 */
class PlayedDrivers : public PlayedRobot {
 public:
  PlayedDrivers(std::unique_ptr<SessionReader> reader, const sensor::SensorFactory& sensors);
  ~PlayedDrivers() override;

  sensor::NavigationModule& getNavigation() override { return *navigation; }
  const Model::Robot* getDescription() const override { return &model; }
  boost::shared_ptr<QVBroker> getBroker() const override { return broker; }
  std::vector<Math::MetricalData> getRecords() override;
  void makeStep() override;
  void setListener(session::SessionListener* newListener) override;

 private:
  struct Ranged {
    ko::Clock::time_point time;
    InputWrite write;
    WaitingBytes::Claim claim;
  };

  void xSortSensors();
  void xAddModules();
  void xAddCameras();
  void xAddLaserModes();
  float xMeasureSonar(const std::string& sonar);
  void xShowImage(const std::string& camera, cv::Mat_<std::uint16_t>& depth,
                  ko::Clock::time_point& time);
  void xReadOn(ko::Clock::time_point end);
  void xTakeInputs();
  /** All that is due now. */
  void xStep();
  void xTell(const SessionInputs& told);
  void xWrite(const InputWrite& write);
  void xAwaitOther();
  bool xIsOnBeat(const SessionInputs& told) const;

  const bool isLog;
  /** Of a robot whose drivers were messages: it was told all, at any moment. */
  const bool wasHeard;
  const boost::shared_ptr<QVBroker> broker = QVBroker::create();
  const Model::Robot model;
  const boost::shared_ptr<robot::MemoryService> memory;
  const boost::shared_ptr<robot::DeviceManager> devices;
  const boost::shared_ptr<robot::MotionService> motion;
  const boost::shared_ptr<robot::VideoDevice> cameras;
  /** The sonars by their keys, and what they measure by their names. */
  std::map<std::string, std::string> sonarOfKey;
  std::map<std::string, std::deque<Ranged>> ranges;
  std::map<std::string, SessionImage> shown;
  std::set<std::string> modeKeys;
  std::map<std::string, std::unique_ptr<robot::LaserModeActuator>> modes;
  boost::shared_ptr<robot::SonarDriver> sonars;
  /** The steps that are not told by the body's beat: each waits for its own moment. */
  std::deque<SessionInputs> steps;
  std::deque<SessionInputs> others;
  /** What the memory keeps that is no number. */
  std::map<std::string, WaitingBytes::Claim> held;
  /** Keys whose values a damaged recording made nonsense of; each is told once. */
  std::set<std::string> refused;
  ko::PeriodicTask beat;
  ko::PeriodicTask other;
  boost::shared_ptr<sensor::NavigationModule> navigation;
  std::optional<ScopedModule> hosting;
};

}  // namespace QV::ros2
