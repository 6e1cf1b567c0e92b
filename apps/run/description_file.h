#pragma once

#include <string>

#include "platform/model/robot.h"

namespace QV::app {

/** Reads a robot description; UsageError, with the path, for one that is missing or malformed. */
Model::Robot readDescription(const std::string& path);

}  // namespace QV::app
