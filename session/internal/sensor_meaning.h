#pragma once

#include "platform/model/sensor_kind.h"
#include "sensor/core/sensor.h"

namespace QV::session {

/** True if it casts rays into a map. */
bool isSimulated(const sensor::Sensor& sensor);

/** Returns what the sensor's kind says; of a simulated one, what it reports; else a scan. */
Model::PointMeaning meaningOf(const sensor::Sensor& sensor, const Model::SensorKind* kind);

}  // namespace QV::session
