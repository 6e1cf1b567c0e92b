#pragma once

#include <set>
#include <string>
#include <variant>

#include "platform/api.h"
#include "platform/navigation/occupancy_map.h"
#include "session/internal/command.h"

namespace QV::outlets {

/** A command that names the sensor whose records a page gets; empty for none. */
struct InspectCommand {
  std::string sensor;
};
/** A command that turns a page's stream of 3D points on or off. */
struct SpaceCommand {
  bool on;
};

/** A command of a page: to the session, or about itself. */
using PageCommand = std::variant<session::Command, InspectCommand, SpaceCommand>;

/**
 * Reads {"op": ..., ...}: throws UsageError with the expectation for a surplus or missing field, a
 * wrong type, a number out of range, or a sensor that is not in `sensors`. Positions are in the
 * coordinates of the map's file; `shift` is the map's.
 */
QV_API PageCommand parseCommand(const std::string& text, const std::set<std::string>& sensors,
                                const MapShift& shift = {});

/** The "op" of a text; empty where there is none. */
std::string findOp(const std::string& text);

}  // namespace QV::outlets
