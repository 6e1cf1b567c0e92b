#pragma once

#include <string>

#include "platform/api.h"
#include "platform/middleware/qv_module.h"

namespace QV::robot {

/**
 * Hands out the robot's description, module "QVRobotModel": "getConfig" answers the XML as it was
 * given. It writes no memory key. Thread-safe.
 */
class QV_API RobotModelService : public QVModule {
 public:
  explicit RobotModelService(const std::string& xml);
  ~RobotModelService() override;
};

}  // namespace QV::robot
