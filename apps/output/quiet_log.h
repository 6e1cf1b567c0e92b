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

/**
 * Hides while it lives that cameras and hole lasers have no measurement: they log it as an error,
 * again and again, also before their first one can have come. With --log-level it is shown.
 */
class QuietWait {
 public:
  QuietWait() {
    if (isLogLevelAsked()) return;
    for (const char* const category : kCategories)
      ko::log::setLevel(category, ko::log::Level::silent);
  }
  ~QuietWait() {
    for (const char* const category : kCategories) ko::log::resetLevel(category);
  }
  QuietWait(const QuietWait&) = delete;
  QuietWait& operator=(const QuietWait&) = delete;

 private:
  static constexpr const char* kCategories[] = {"Navigation.Sensor3D",
                                                "Navigation.HoleLaserSensor"};
};

}  // namespace QV::app
