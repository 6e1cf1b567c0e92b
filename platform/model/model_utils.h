#pragma once

#include <string>

#include "platform/api.h"
#include "platform/model/robot.h"

namespace QV::Model::ModelUtils {

/**
 * Reads a robot description: URDF with this library's own elements (docs/robot-description.md).
 * A malformed one throws std::runtime_error naming line, element and what was expected. Numbers
 * read the same in every locale. Safe from any thread.
 */
QV_API Robot robotFromXml(const std::string& xml);

}  // namespace QV::Model::ModelUtils
