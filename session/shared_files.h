#pragma once

#include <string>

#include "platform/api.h"

namespace QV::session {

/**
 * Finds a file that comes with the library, such as "maps/apartment.yaml": in share/qv of the place
 * that the library, or else the program, is installed in. UsageError if it is in neither.
 */
QV_API std::string findSharedFile(const std::string& name);

/**
 * Finds the description of one of the project's own robots by its name ("porter"). What names a
 * file that is there, or holds a slash or a dot, is a path already. UsageError, with the names that
 * there are, for another.
 */
QV_API std::string findRobot(const std::string& nameOrPath);

/** Finds a map by its name ("apartment") in the same way. */
QV_API std::string findMap(const std::string& nameOrPath);

/**
 * The path of a recording or a log: what is there, or else one of the project's own by its name
 * ("lidar.log"). Another one comes back as it is.
 */
QV_API std::string findRecording(const std::string& nameOrPath);

}  // namespace QV::session
