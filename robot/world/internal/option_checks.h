#pragma once

#include "robot/world/world_options.h"

namespace QV::robot {

/** What makes no sense, but for boxes, holes and people: std::invalid_argument. */
void checkOptions(const WorldOptions& options);

}  // namespace QV::robot
