#pragma once

#include <iosfwd>
#include <string>

#include "apps/guides/command_table.h"

namespace QV::app {

/** A page of the manual (section 1) in roff: of a command, or of the program with all of them. */
void writeManualPage(std::ostream& out, const CommandRow& command);

/** "qvsensors-map-info.1". */
std::string nameOfPage(const CommandRow& command);

}  // namespace QV::app
