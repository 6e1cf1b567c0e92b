#pragma once

#include <string>

#include "platform/api.h"

namespace QV::session {

/**
 * Finds a file that comes with the library, such as "maps/apartment.yaml". Looks in share/qv beside
 * the library, then beside the program. Throws UsageError if it is in neither.
 */
QV_API std::string findSharedFile(const std::string& name);

/**
 * Finds the description of one of the project's own robots by its name ("porter"). Returns a text
 * with a slash or a dot, or the name of an existing file, as it is: a path. Otherwise throws
 * UsageError with the known names.
 */
QV_API std::string findRobot(const std::string& nameOrPath);

/** Finds a map by its name ("apartment") in the same way. */
QV_API std::string findMap(const std::string& nameOrPath);

/**
 * Finds a recording or a log: a file that exists, or else one of the project's own by its name
 * ("lidar.log"). Returns any other text as it is.
 */
QV_API std::string findRecording(const std::string& nameOrPath);

}  // namespace QV::session
