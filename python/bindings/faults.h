#pragma once

#include <string>
#include <vector>

#include "robot/world/faults/fault.h"

namespace QV::python {

/** "off", "stuck", ...; ValueError for anything else. */
robot::FaultKind faultKindFrom(const std::string& name);

std::vector<std::string> namesOf(const std::vector<robot::FaultKind>& kinds);

}  // namespace QV::python
