#pragma once

#include "platform/api.h"
#include "robot/logs/internal/recording.h"
#include "robot/services/internal/sonar_driver.h"

namespace QV::robot {

/**
 * Makes a source of what the sonars of a recording, type 9 with one key, measure while it plays
 * from `start` on ko::Clock. It gives the newest range until the next one; no echo at
 * maximumDetectionDistance and beyond, nor before the start. Asked for another sensor it throws
 * std::invalid_argument. Copies are thread-safe.
 */
QV_API SonarDriver::Source makeSonarSource(const Recording& recording, ko::Clock::time_point start);

}  // namespace QV::robot
