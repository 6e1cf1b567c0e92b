#pragma once

#include <memory>

#include "platform/api.h"
#include "platform/ko/simulated_time.h"
#include "session/internal/session_robot.h"
#include "session/session.h"

namespace QV::session {

/** `time` is null where the machine's goes by, or somebody else's; `robot` was made in it. */
QV_API std::unique_ptr<Session> makeSession(std::unique_ptr<ko::SimulatedTime> time,
                                            std::unique_ptr<SessionRobot> robot);

}  // namespace QV::session
