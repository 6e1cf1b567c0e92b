#pragma once

#include "apps/output/notes.h"

namespace QV::app {

/**
 * Silences the log while it lives: lines go only to its sinks. With --log-level they are still
 * printed, unless that would spoil the screen.
 */
class QuietLog {
 public:
  explicit QuietLog(bool hasScreen = false) {
    if (hasScreen || !isLogLevelAsked()) ko::log::setLevel(ko::log::Level::silent);
  }
  ~QuietLog() { ko::log::setLevel(getLogLevel()); }
  QuietLog(const QuietLog&) = delete;
  QuietLog& operator=(const QuietLog&) = delete;
};

}  // namespace QV::app
