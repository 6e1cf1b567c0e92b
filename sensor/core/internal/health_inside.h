#pragma once

#include "sensor/core/internal/health_board.h"
#include "sensor/core/sensor_manager.h"

namespace QV::sensor {

/** The way of the library's managers to the health of their sensors. */
struct HealthInside {
  static HealthBoard& of(const SensorManager& manager) { return manager.xGetHealth(); }
  static HealthBoard* find(const SensorManager& manager) { return manager.health; }
};

inline HealthBoard& healthOf(const SensorManager& manager) {
  return HealthInside::of(manager);
}

/** Judges the health, unless nobody has ever asked for it. */
inline void tickHealthOf(const SensorManager& manager, ko::Duration period) {
  if (HealthBoard* const health = HealthInside::find(manager)) health->tick(period);
}

}  // namespace QV::sensor
