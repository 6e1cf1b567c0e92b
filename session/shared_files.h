#pragma once

#include <string>

namespace QV::session {

/**
 * Where a file that is shipped with the project lies, such as "maps/floor.yaml": beside the
 * installed program, else in the source tree. UsageError if in neither.
 */
std::string findSharedFile(const std::string& name);

}  // namespace QV::session
