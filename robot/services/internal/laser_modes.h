#pragma once

#include <memory>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "platform/api.h"
#include "platform/model/robot.h"
#include "robot/services/internal/laser_mode_actuator.h"

namespace QV::robot {

using LaserModes = std::vector<std::unique_ptr<LaserModeActuator>>;

/** Makes each mode that lasers of a robot share, for one that others drive: it shows at once. */
QV_API LaserModes makeLaserModes(const boost::shared_ptr<QVBroker>& broker,
                                 const boost::shared_ptr<DeviceManager>& devices,
                                 const Model::Robot& robot);

}  // namespace QV::robot
