#pragma once

#include <string>
#include <vector>

#include "outlets/web/internal/depth_picture.h"
#include "platform/ko/log.h"
#include "session/session.h"
#include "session/snapshot.h"

namespace QV::outlets {

/** What the page is told; docs/live-view.md describes each. All are one object of JSON. */
std::string helloMessage(session::Session& robot);
std::string stateMessage(const session::Snapshot& snapshot);
std::string logMessage(const std::vector<ko::log::Record>& lines);
std::string depthMessage(const std::string& sensor, const DepthPicture& picture);
std::string refusedMessage(const std::string& op, const std::string& reason);

}  // namespace QV::outlets
