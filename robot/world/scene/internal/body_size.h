#pragma once

#include "platform/api.h"
#include "platform/model/robot.h"
#include "robot/services/internal/motion_service.h"
#include "robot/world/scene/internal/body.h"

namespace QV::robot {

/**
 * The upright cylinder about the root link that its own solids fit in, as high as all solids of the
 * robot stand in its present posture. Without solids on the root link, 0.25 m wide.
 */
QV_API BodySize measureBody(const Model::Robot& robot, const MotionService& motion);

}  // namespace QV::robot
