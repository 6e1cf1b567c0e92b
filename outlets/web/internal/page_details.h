#pragma once

#include <string>

#include "outlets/internal/json_values.h"
#include "session/snapshot.h"

namespace QV::outlets {

/** The most points of a record that a page gets. */
constexpr std::size_t kMostRecordPoints = 100;
/** The most 3D points of a sensor that a page gets. */
constexpr std::size_t kMostSpacePoints = 4000;

/** The records of one sensor as it gave them, the first points of each; empty without the sensor.
 */
QV_API std::string recordMessage(const std::string& sensor, const session::Snapshot& snapshot);

/** The points of all sensors, in the map, with the height above the floor. */
QV_API std::string spaceMessage(const session::Snapshot& snapshot);

}  // namespace QV::outlets
