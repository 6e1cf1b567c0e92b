#include "robot/services/robot_model_service.h"

namespace QV::robot {

RobotModelService::RobotModelService(const std::string& xml) : QVModule("QVRobotModel") {
  bindMethod("getConfig", [xml] { return xml; });
}

RobotModelService::~RobotModelService() = default;

}  // namespace QV::robot
