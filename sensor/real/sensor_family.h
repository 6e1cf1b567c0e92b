#pragma once

#include <string>

#include "platform/api.h"

namespace QV::sensor {

/** The family of the sensors that a description's `type` stands for; empty for a type that has
 * none. */
QV_API std::string familyOfType(int type);

}  // namespace QV::sensor
