#pragma once

#include <string>
#include <vector>

#include "platform/math/pose2d.h"

namespace QV::app {

/** "x,y,theta" in metres and radians; UsageError for anything else. */
Math::Pose2D parsePose(const std::string& text);

/** "x,y x,y ...", at least two different positions in metres; UsageError for anything else. */
std::vector<Math::Position2D> parsePath(const std::string& text);

}  // namespace QV::app
