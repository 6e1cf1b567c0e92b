#pragma once

#include <string>

#include "platform/api.h"
#include "platform/ko/log.h"

namespace ko::log::detail {

/** Writes a line to standard error, with time and level. Thread-safe. */
void writeToConsole(Level level, const std::string& line);

/**
 * Folds warnings and errors that repeat into lines with their number; at first it does not. To end
 * it prints what is counted so far. Thread-safe.
 */
QV_API void foldRepeats(bool on);

/** Prints what is counted so far. Thread-safe. */
void flushRepeats();

}  // namespace ko::log::detail
