#pragma once

#include <string>
#include <vector>

#include "apps/live/depth_picture.h"
#include "apps/live/live_snapshot.h"
#include "apps/run/robot_run.h"
#include "platform/ko/log.h"

namespace QV::app {

/** What the page is told; docs/live-view.md describes each. All are one object of JSON. */
std::string helloMessage(RobotRun& robot);
std::string stateMessage(const LiveSnapshot& snapshot);
std::string logMessage(const std::vector<ko::log::Record>& lines);
std::string depthMessage(const std::string& sensor, const DepthPicture& picture);
std::string refusedMessage(const std::string& op, const std::string& reason);

}  // namespace QV::app
