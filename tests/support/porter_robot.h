#pragma once

#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <string>

#include "apps/shared_files.h"
#include "platform/ko/periodic_task.h"
#include "platform/model/model_utils.h"
#include "platform/model/number_text.h"
#include "robot/services/device_manager.h"
#include "robot/services/laser_mode_actuator.h"
#include "robot/services/memory_service.h"
#include "robot/services/motion_service.h"
#include "robot/services/robot_model_service.h"
#include "robot/services/sonar_driver.h"
#include "robot/services/video_device.h"

namespace QV::test {

inline std::string readFile(const std::string& path) {
  std::ifstream file(path);
  return std::string(std::istreambuf_iterator<char>(file), {});
}

/**
 * The project's own robot, its services in this process, standing before something: each sonar has
 * an echo at 1.5 m, each point of a laser lies 1 m ahead, the camera looks at a wall at 2 m. Lasers
 * take 30 ms to change their mode, and scan every 50 ms.
 */
class PorterRobot {
 public:
  explicit PorterRobot(const boost::shared_ptr<QVBroker>& broker)
      : memory(boost::make_shared<robot::MemoryService>(broker)),
        devices(boost::make_shared<robot::DeviceManager>(broker)),
        sonars(boost::make_shared<robot::SonarDriver>(broker, model)) {
    sonars->setSource([](const std::string&) { return 1.5f; });
    video->addCamera({2, "camera", 1, 1.02f, 0.79f,
                      [](cv::Mat_<std::uint16_t>& depth, ko::Clock::time_point) { depth = 2000; }});
    for (const boost::shared_ptr<QVModule>& module :
         {boost::shared_ptr<QVModule>(memory), boost::shared_ptr<QVModule>(devices),
          boost::shared_ptr<QVModule>(motion), boost::shared_ptr<QVModule>(sonars),
          boost::shared_ptr<QVModule>(video)}) {
      broker->registerModule(module);
    }
    broker->registerModule(boost::make_shared<robot::RobotModelService>(description));
    for (const auto& [name, config] : model.sensorConfigs) addSensor(broker, config);
    scan.setName("PorterRobot");
    scan.setPeriod(boost::chrono::milliseconds(50));
    scan.setCallback([this] { dateScans(); });
    scan.start(true);
  }

  /** Whether a laser's bit of the operation mode is on. */
  bool isLaserOn(const std::string& laser) const {
    const auto& properties = model.sensorConfigs.at(laser).properties;
    const QVValue key[] = {properties.at("getOperationMode")};
    const int mode = memory->call("getData", key).toInt32();
    return (mode & std::stoi(properties.at("regIndex"))) != 0;
  }
  bool isLaser(const std::string& sensor) const {
    const auto found = model.sensorConfigs.find(sensor);
    return found != model.sensorConfigs.end() && found->second.properties.count("regIndex") > 0;
  }

  const std::string description = readFile(app::findSharedFile("descriptions/porter.urdf"));
  const Model::Robot model = Model::ModelUtils::robotFromXml(description);
  const boost::shared_ptr<robot::MemoryService> memory;
  const boost::shared_ptr<robot::DeviceManager> devices;
  const boost::shared_ptr<robot::MotionService> motion =
      boost::make_shared<robot::MotionService>(model);
  const boost::shared_ptr<robot::SonarDriver> sonars;
  const boost::shared_ptr<robot::VideoDevice> video = boost::make_shared<robot::VideoDevice>();

 private:
  typedef std::map<std::string, std::string> Properties;

  void write(const std::string& key, const QVValue& value) const {
    const QVValue arguments[] = {key, value};
    memory->call("insertData", arguments);
  }

  void addSensor(const boost::shared_ptr<QVBroker>& broker, const Model::SensorConfig& config) {
    for (std::size_t i = 0; i < config.memoryKeys.size(); ++i) {
      write(config.memoryKeys[i], i % 2 == 0 ? 1.0f : 0.0f);
    }
    const Properties& properties = config.properties;
    if (const auto actuator = properties.find("setOperationMode"); actuator != properties.end()) {
      auto& shared = actuators[actuator->second];
      if (!shared) {
        shared = std::make_unique<robot::LaserModeActuator>(broker, devices, actuator->second,
                                                            properties.at("getOperationMode"),
                                                            boost::chrono::milliseconds(30));
      }
    }
    if (properties.count("status") > 0) write(properties.at("status"), 2);
    if (properties.count("inclination") > 0) write(properties.at("inclination"), 0.0f);
  }

  void dateScans() const {
    for (const auto& [name, config] : model.sensorConfigs) {
      const auto stamp = config.properties.find("timestamp");
      if (stamp != config.properties.end()) {
        write(stamp->second, ko::Clock::toInt32ms(ko::Clock::now()));
      }
    }
  }

  std::map<std::string, std::unique_ptr<robot::LaserModeActuator>> actuators;
  ko::PeriodicTask scan;
};

}  // namespace QV::test
