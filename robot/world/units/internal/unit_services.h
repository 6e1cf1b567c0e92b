#pragma once

#include <boost/shared_ptr.hpp>

#include "platform/middleware/qv_broker.h"

namespace QV::robot {

class DeviceManager;
class SonarDriver;
class VideoDevice;

/** The services of the robot that its units plug themselves into. */
struct UnitServices {
  boost::shared_ptr<QVBroker> broker;
  boost::shared_ptr<DeviceManager> devices;
  boost::shared_ptr<SonarDriver> sonars;
  boost::shared_ptr<VideoDevice> cameras;
};

}  // namespace QV::robot
