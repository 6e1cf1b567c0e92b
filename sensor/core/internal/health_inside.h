#pragma once

#include "sensor/core/internal/health_board.h"
#include "sensor/core/sensor_manager.h"

namespace QV::sensor {

/** The way of the library's managers to the health of their sensors. */
struct HealthInside {
  static HealthBoard& of(const SensorManager& manager) { return *manager.health; }
};

inline HealthBoard& healthOf(const SensorManager& manager) {
  return HealthInside::of(manager);
}

}  // namespace QV::sensor
