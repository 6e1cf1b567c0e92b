#pragma once

#include <string>

#include "ros2/graph/graph.h"

namespace QV::ros2 {

/** The engine's configuration. */
QV_API std::string settingsOf(const GraphOptions& options);

}  // namespace QV::ros2
