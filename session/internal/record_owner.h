#pragma once

#include <string>

#include "platform/math/metrical_data.h"
#include "sensor/core/sensor_manager.h"

namespace QV::session {

/**
 * Returns the sensor of a record: touched groups report under their own names, in their sensor's
 * family.
 */
inline std::string sensorOf(const Math::MetricalData& record,
                            const sensor::SensorManager& manager) {
  if (manager.isSensor(record.sensorName)) return record.sensorName;
  const auto sensors = manager.getSensorsByFamily(record.familyName);
  return sensors.size() == 1 ? *sensors.begin() : record.familyName;
}

}  // namespace QV::session
