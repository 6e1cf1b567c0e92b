#include "robot/services/internal/laser_modes.h"

#include <set>
#include <string>

#include "platform/model/sensor_properties.h"

namespace QV::robot {

LaserModes makeLaserModes(const boost::shared_ptr<QVBroker>& broker,
                          const boost::shared_ptr<DeviceManager>& devices,
                          const Model::Robot& robot) {
  LaserModes modes;
  std::set<std::string> actuators;
  for (const auto& [name, config] : robot.sensorConfigs) {
    const Model::SensorProperties properties(config);
    const std::string actuator = properties.getText("setOperationMode");
    if (actuator.empty() || !actuators.insert(actuator).second) continue;
    modes.push_back(std::make_unique<LaserModeActuator>(
        broker, devices, actuator, properties.getText("getOperationMode"), ko::Duration::zero()));
  }
  return modes;
}

}  // namespace QV::robot
