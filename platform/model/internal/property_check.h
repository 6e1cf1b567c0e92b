#pragma once

#include <vector>

#include "platform/model/description_faults.h"

namespace QV::Model::detail {

/** Returns the properties that differ from the rules of the sensor's kind, in order of names. */
void checkProperties(const SensorConfig& config, const SensorKind& kind,
                     std::vector<DescriptionFault>& faults);

}  // namespace QV::Model::detail
