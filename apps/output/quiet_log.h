#pragma once

#include "platform/ko/log.h"

namespace QV::app {

/** While it lives, the log goes to its sinks only: what it says is shown elsewhere. */
class QuietLog {
 public:
  QuietLog() { ko::log::setLevel(ko::log::Level::silent); }
  ~QuietLog() { ko::log::setLevel(ko::log::Level::warning); }
  QuietLog(const QuietLog&) = delete;
  QuietLog& operator=(const QuietLog&) = delete;
};

}  // namespace QV::app
