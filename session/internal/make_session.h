#pragma once

#include <functional>
#include <memory>

#include "platform/api.h"
#include "platform/ko/simulated_time.h"
#include "session/internal/session_robot.h"
#include "session/session.h"

namespace QV::session {

/** A robot, and the time that it was made in. */
struct TimedRobot {
  std::unique_ptr<ko::SimulatedTime> time;
  std::unique_ptr<SessionRobot> robot;
};

/**
 * Makes a recording's robot anew, in two steps: what may fail comes first, and the second is made
 * when the time of the old one has ended.
 */
using Reopen = std::function<std::function<TimedRobot()>()>;

/** `time` is null where the machine's goes by, or somebody else's; `robot` was made in it. */
QV_API std::unique_ptr<Session> makeSession(std::unique_ptr<ko::SimulatedTime> time,
                                            std::unique_ptr<SessionRobot> robot,
                                            Reopen reopen = {});

}  // namespace QV::session
