#pragma once

#include <string>

#include "platform/ko/log.h"

namespace ko::log::detail {

/** Writes a line to standard error, with time and level. Thread-safe. */
void writeToConsole(Level level, const std::string& line);

}  // namespace ko::log::detail
