#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/api.h"
#include "session/open.h"

namespace QV::session {

/** The second step of opening: quick, on the thread that the session shall belong to. Call it once.
 */
using Opening = std::function<std::unique_ptr<Session>()>;

/**
 * The functions of open.h in two steps. The first one reads the files and looks at the whole map,
 * which takes seconds if it is large, on any thread.
 */
QV_API Opening prepareVirtual(const std::string& robot, const OpenOptions& options);
QV_API Opening prepareSimulated(int kind, const OpenOptions& options);
QV_API Opening prepareRecording(const std::string& log, const std::optional<std::string>& poses);

}  // namespace QV::session
