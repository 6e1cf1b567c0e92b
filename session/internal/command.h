#pragma once

#include <optional>
#include <string>
#include <variant>

#include "platform/api.h"
#include "platform/math/position.h"
#include "robot/world/faults/fault.h"

namespace QV::session {

class Session;

struct SubscribeCommand {
  std::string sensor;
  bool on;
};
struct EnableCommand {
  std::string sensor;
  bool on;
};
struct DiagnoseCommand {
  std::string sensor;
  bool value;
};
/** A velocity, m/s and rad/s. It expires: see Session::drive. */
struct DriveCommand {
  float forward;
  float turn;
};
/** A goal in the map. */
struct GoalCommand {
  Math::Position2D position;
};
struct StopCommand {};
struct PauseCommand {
  bool on;
};
struct StepCommand {};
/** Simulated seconds per real second. */
struct SpeedCommand {
  double value;
};

/** Seconds from the start of a recording. */
struct SeekCommand {
  double time;
};

/** Sets a fault of a sensor of a virtual robot; without a kind, ends it. */
struct FaultCommand {
  std::string sensor;
  std::optional<robot::FaultKind> kind;
};

/** A command of a viewer to a session. */
using Command =
    std::variant<SubscribeCommand, EnableCommand, DiagnoseCommand, DriveCommand, GoalCommand,
                 StopCommand, PauseCommand, StepCommand, SpeedCommand, SeekCommand, FaultCommand>;

/**
 * Executes a command of `subscriber`. Throws UsageError if the robot can't do it; exceptions of
 * hardware reach the caller.
 */
QV_API void execute(Session& session, const std::string& subscriber, const Command& command);

constexpr double kLongestRecording = 1e7;
constexpr double kFastest = 2.0;
constexpr double kFastestTurn = 4.0;
constexpr double kSlowestTime = 0.1;
constexpr double kFastestTime = 10.0;

}  // namespace QV::session
