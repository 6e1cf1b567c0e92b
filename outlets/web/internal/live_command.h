#pragma once

#include <set>
#include <string>
#include <variant>

#include "platform/api.h"
#include "session/internal/command.h"

namespace QV::outlets {

/** A command that names the sensor whose records a page is told; empty for none. */
struct InspectCommand {
  std::string sensor;
};
/** A command that says if a page is told what the sensors see in space. */
struct SpaceCommand {
  bool on;
};

/** A command of a page: to the session, or about itself. */
using PageCommand = std::variant<session::Command, InspectCommand, SpaceCommand>;

/**
 * Reads {"op": ..., ...}: a field too many or too few, one of another type, a number out of range
 * and a sensor that is none of `sensors` are a UsageError, which says what would be right.
 */
QV_API PageCommand parseCommand(const std::string& text, const std::set<std::string>& sensors);

/** The "op" of a text; empty where there is none. */
std::string findOp(const std::string& text);

}  // namespace QV::outlets
