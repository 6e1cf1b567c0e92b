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
/** m/s and rad/s; to be renewed, see Session::drive. */
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
/** Simulated seconds for a second. */
struct SpeedCommand {
  double value;
};

/** Seconds from the start of a recording. */
struct SeekCommand {
  double time;
};

/** Lets a sensor of a virtual robot fail from now on, or, without a kind, work again. */
struct FaultCommand {
  std::string sensor;
  std::optional<robot::FaultKind> kind;
};

/** A command of a viewer to a session. */
using Command =
    std::variant<SubscribeCommand, EnableCommand, DiagnoseCommand, DriveCommand, GoalCommand,
                 StopCommand, PauseCommand, StepCommand, SpeedCommand, SeekCommand, FaultCommand>;

/**
 * Executes a command of `subscriber`. What can't be done is a UsageError; what hardware throws
 * passes through.
 */
QV_API void execute(Session& session, const std::string& subscriber, const Command& command);

constexpr double kLongestRecording = 1e7;
constexpr double kFastest = 2.0;
constexpr double kFastestTurn = 4.0;
constexpr double kSlowestTime = 0.1;
constexpr double kFastestTime = 10.0;

}  // namespace QV::session
