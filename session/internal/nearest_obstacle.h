#pragma once

#include <optional>

#include "platform/api.h"
#include "platform/math/metrical_data.h"

namespace QV::session {

/** The point nearest to the sensor that is nearer than the maximum range, metres; or nothing. */
QV_API std::optional<float> nearestObstacle(const Math::MetricalData& record);

}  // namespace QV::session
