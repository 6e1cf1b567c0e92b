#pragma once

#include <string>

#include "outlets/internal/json_values.h"
#include "session/session.h"

namespace QV::outlets {

/**
 * The first message to every page: the robot, its map with the number of tile levels, and its
 * families.
 */
Json describeWorld(session::Session& robot, int mapLevels);
std::string helloMessage(Json world, const std::string& subscriber);

}  // namespace QV::outlets
