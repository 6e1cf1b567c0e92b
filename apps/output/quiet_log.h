#pragma once

#include "apps/output/notes.h"

namespace QV::app {

/**
 * While it lives, the log goes to its sinks only: what it says is shown elsewhere. Somebody who has
 * asked for a level still sees it, unless it would spoil the screen.
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
