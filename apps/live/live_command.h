#pragma once

#include <set>
#include <string>
#include <variant>

#include "platform/math/position.h"

namespace QV::app {

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
/** m/s and rad/s; to be renewed, see LiveDriver. */
struct DriveCommand {
  float forward;
  float turn;
};
/** In the map. */
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

/** What a viewer asks of the world. */
typedef std::variant<SubscribeCommand, EnableCommand, DiagnoseCommand, DriveCommand, GoalCommand,
                     StopCommand, PauseCommand, StepCommand, SpeedCommand>
    LiveCommand;

constexpr double kFastest = 2.0;
constexpr double kFastestTurn = 4.0;
constexpr double kSlowestTime = 0.1;
constexpr double kFastestTime = 10.0;

/**
 * Reads {"op": ..., ...}: a field too many or too few, one of another type, a number out of range
 * and a sensor that is none of `sensors` are a UsageError, which says what would be right.
 */
LiveCommand parseLiveCommand(const std::string& text, const std::set<std::string>& sensors);

/** The "op" of a text; empty where there is none. */
std::string findOp(const std::string& text);

}  // namespace QV::app
