#pragma once

#include <functional>
#include <memory>

#include "platform/api.h"
#include "platform/ko/simulated_time.h"
#include "session/internal/session_robot.h"
#include "session/session.h"

namespace QV::session {

/** A robot, and the time that it was created in. */
struct TimedRobot {
  std::unique_ptr<ko::SimulatedTime> time;
  std::unique_ptr<SessionRobot> robot;
};

/**
 * Creates a recording's robot again in two steps. The first one does what may fail. The second one
 * runs after the old robot's time has ended.
 */
using Reopen = std::function<std::function<TimedRobot()>()>;

/** `time` is null for real time, and for a time that somebody else owns. `robot` was created in
 * it. */
QV_API std::unique_ptr<Session> makeSession(std::unique_ptr<ko::SimulatedTime> time,
                                            std::unique_ptr<SessionRobot> robot,
                                            Reopen reopen = {});

}  // namespace QV::session
