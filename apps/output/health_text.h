#pragma once

#include <string>

#include "sensor/core/sensor_health.h"

namespace QV::app {

/** Returns the reason of a sensor's health at `now`; of bad health also how long it has lasted, and
 * how often it came. */
std::string healthText(const sensor::SensorHealth& health, ko::Clock::time_point now);

}  // namespace QV::app
