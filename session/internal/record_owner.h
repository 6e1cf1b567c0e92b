#pragma once

#include <string>

#include "platform/math/metrical_data.h"
#include "sensor/core/sensor_manager.h"

namespace QV::session {

/** Whose a record is: touched groups report under their own names. */
inline std::string sensorOf(const Math::MetricalData& record,
                            const sensor::SensorManager& manager) {
  return manager.isSensor(record.sensorName) ? record.sensorName : record.familyName;
}

}  // namespace QV::session
