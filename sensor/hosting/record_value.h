#pragma once

#include <vector>

#include "platform/api.h"
#include "platform/math/metrical_data.h"
#include "platform/middleware/qv_value.h"

namespace QV::sensor {

/**
 * A record as it travels through a broker, an array of six:
 *
 * | element | content |
 * |---|---|
 * | 0, 1 | names of the sensor and of its family, strings |
 * | 2 | field of view: array of minRange, maxRange (m), angularRange (rad), rayCount |
 * | 3 | sensorTransform: array of 12 floats by rows, translations in m |
 * | 4 | points: binary, x, y, z of each as this machine's 32-bit floats, m, sensor's frame |
 * | 5 | timestamp: int, ns of ko::Clock |
 */
QV_API QVValue toQVValue(const Math::MetricalData& record);
/** An array of records. */
QV_API QVValue toQVValue(const std::vector<Math::MetricalData>& records);

/** Converts back, without loss. Throws QVError with the element for a malformed value. */
QV_API Math::MetricalData recordFromQVValue(const QVValue& value);
QV_API std::vector<Math::MetricalData> recordsFromQVValue(const QVValue& value);

}  // namespace QV::sensor
