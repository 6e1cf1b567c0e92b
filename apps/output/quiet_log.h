#pragma once

#include "apps/output/notes.h"

namespace QV::app {

/**
 * Silences the log while it lives: lines go to its sinks only, and are shown elsewhere. Somebody
 * who has asked for a level still sees it, unless it would spoil the screen.
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
