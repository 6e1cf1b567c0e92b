#pragma once

#include <set>
#include <string>

#include "platform/api.h"
#include "session/internal/command.h"

namespace QV::outlets {

/**
 * Reads {"op": ..., ...}: a field too many or too few, one of another type, a number out of range
 * and a sensor that is none of `sensors` are a UsageError, which says what would be right.
 */
QV_API session::Command parseCommand(const std::string& text, const std::set<std::string>& sensors);

/** The "op" of a text; empty where there is none. */
std::string findOp(const std::string& text);

}  // namespace QV::outlets
