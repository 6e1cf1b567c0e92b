#include "robot/services/internal/robot_model_service.h"

#include "platform/middleware/contracts/robot_model_contract.h"

namespace QV::robot {

RobotModelService::RobotModelService(const std::string& xml)
    : QVModule(RobotModelContract::kModule) {
  bindMethod(RobotModelContract::kGetConfig, [xml] { return xml; });
}

RobotModelService::~RobotModelService() = default;

}  // namespace QV::robot
