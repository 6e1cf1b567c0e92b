#pragma once

#include <vector>

#include "ros2/messages/report_msgs.h"
#include "session/snapshot.h"

namespace QV::ros2 {

/** Returns the health of all sensors of a snapshot; last come those that could not be built. */
std::vector<diagnostic_msgs::DiagnosticStatus> statusesOf(const session::Snapshot& snapshot);

}  // namespace QV::ros2
