#pragma once

#include "robot/world/units/unit_factory.h"

namespace QV::robot {

class DeviceManager;
class SonarDriver;
class VideoDevice;

struct UnitFactory::Services {
  boost::shared_ptr<QVBroker> broker;
  boost::shared_ptr<DeviceManager> devices;
  boost::shared_ptr<SonarDriver> sonars;
  boost::shared_ptr<VideoDevice> cameras;
};

}  // namespace QV::robot
