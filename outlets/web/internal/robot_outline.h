#pragma once

#include <vector>

#include "platform/api.h"
#include "platform/math/position.h"
#include "platform/model/robot.h"

namespace QV::outlets {

/**
 * The convex outline of all the robot's solids from above, in the root link's frame with every
 * joint at 0: counterclockwise, metres. Empty for a robot without solids that have a size.
 */
QV_API std::vector<Math::Position2D> outlineOf(const Model::Robot& robot);

}  // namespace QV::outlets
