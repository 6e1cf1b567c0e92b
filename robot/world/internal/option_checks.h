#pragma once

#include "robot/world/world_options.h"

namespace QV::robot {

/** Throws std::invalid_argument for what makes no sense, but for boxes, holes and people. */
void checkOptions(const WorldOptions& options);

}  // namespace QV::robot
