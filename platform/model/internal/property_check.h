#pragma once

#include <string>
#include <vector>

#include "platform/model/description_faults.h"

namespace QV::Model::detail {

/** Returns the properties that differ from the rules of the sensor's kind, in order of names. */
void checkProperties(const SensorConfig& config, const SensorKind& kind,
                     std::vector<DescriptionFault>& faults);

/** True if the sensor has this property, with a value that its kind's rule allows. */
bool hasProperValue(const SensorConfig& config, const SensorKind& kind, const std::string& name);

}  // namespace QV::Model::detail
