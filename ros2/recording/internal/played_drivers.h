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
 * A robot's services, with the recorded inputs in place of its drivers, and the library's sensors
 * on them. Periodic parts run by the same beat, begun in the same order, so that a sensor reads at
 * each moment what it read in the recording.
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
  /** True if the drivers were messages of a graph. */
  const bool wasHeard;
  const boost::shared_ptr<QVBroker> broker = QVBroker::create();
  const Model::Robot model;
  const boost::shared_ptr<robot::MemoryService> memory;
  const boost::shared_ptr<robot::DeviceManager> devices;
  const boost::shared_ptr<robot::MotionService> motion;
  const boost::shared_ptr<robot::VideoDevice> cameras;
  /** The sonars by their keys, and their ranges by their names. */
  std::map<std::string, std::string> sonarOfKey;
  /** Of a robot that was heard. */
  std::map<std::string, std::string> jointOfKey;
  std::map<std::string, std::deque<Ranged>> ranges;
  std::map<std::string, SessionImage> shown;
  std::set<std::string> modeKeys;
  robot::LaserModes modes;
  boost::shared_ptr<robot::SonarDriver> sonars;
  /** The steps outside the body's beat: each waits for its own moment. */
  std::deque<SessionInputs> steps;
  std::deque<SessionInputs> others;
  /** The claims of values in the memory that are not numbers. */
  std::map<std::string, WaitingBytes::Claim> held;
  /** Keys whose values are nonsense in a damaged recording; each is reported once. */
  std::set<std::string> refused;
  ko::PeriodicTask beat;
  ko::PeriodicTask other;
  boost::shared_ptr<sensor::NavigationModule> navigation;
  std::optional<ScopedModule> hosting;
};

}  // namespace QV::ros2
