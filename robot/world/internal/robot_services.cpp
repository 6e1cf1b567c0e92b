#include "robot/world/internal/robot_services.h"

#include <string>

#include <boost/make_shared.hpp>

#include "platform/middleware/qv_error.h"
#include "robot/services/internal/device_manager.h"
#include "robot/services/internal/memory_service.h"
#include "robot/services/internal/motion_service.h"
#include "robot/services/internal/robot_model_service.h"
#include "robot/services/internal/sonar_driver.h"
#include "robot/services/video_device.h"
#include "robot/world/internal/virtual_robot_contract.h"

namespace QV::robot {
namespace {

void checkName(const QVBroker& broker, const std::string& name) {
  if (!broker.isModulePresent(name)) return;
  throw QVError(VirtualRobotContract::kModule, "VirtualRobot",
                "the broker has a module \"" + name + "\" already");
}

}  // namespace

RobotServices::RobotServices(const boost::shared_ptr<QVBroker>& broker,
                             const RobotDescription& description, const UnitContext& context,
                             const boost::shared_ptr<MotionService>& motion)
    : units(UnitParts::of(context)),
      services{broker, boost::make_shared<DeviceManager>(broker),
               boost::make_shared<SonarDriver>(broker, description.model,
                                               context.getOptions().sonarPeriod),
               boost::make_shared<VideoDevice>()},
      modules{units.memory,    services.devices,
              motion,          boost::make_shared<RobotModelService>(description.xml),
              services.sonars, services.cameras} {
  checkName(*broker, VirtualRobotContract::kModule);
  for (const auto& module : modules) checkName(*broker, module->getName());
  for (const auto& module : modules) broker->registerModule(module);
  units.services = &services;
}

RobotServices::~RobotServices() {
  units.services = nullptr;
  for (const auto& module : modules) services.broker->unregisterModule(module->getName());
}

}  // namespace QV::robot
