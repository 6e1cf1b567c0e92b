#pragma once

#include <vector>

#include "platform/model/description_faults.h"

namespace QV::Model::detail {

/** Tells the properties that are not as the row of the sensor's kind says, in order of names. */
void checkProperties(const SensorConfig& config, const SensorKind& kind,
                     std::vector<DescriptionFault>& faults);

}  // namespace QV::Model::detail
