#pragma once

#include <string>
#include <vector>

#include "outlets/web/internal/depth_picture.h"
#include "outlets/web/page_state.h"
#include "platform/ko/log.h"
#include "session/snapshot.h"

namespace QV::outlets {

/** Makes the messages to the page; docs/live-view.md describes each. All are one object of JSON. */
QV_API std::string logMessage(const std::vector<ko::log::Record>& lines);
std::string depthMessage(const std::string& sensor, const DepthPicture& picture);
std::string refusedMessage(const std::string& op, const std::string& reason);

}  // namespace QV::outlets
