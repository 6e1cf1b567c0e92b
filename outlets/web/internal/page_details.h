#pragma once

#include <string>

#include "outlets/internal/json_values.h"
#include "session/snapshot.h"

namespace QV::outlets {

/** Points of a record that a page is told. */
constexpr std::size_t kMostRecordPoints = 100;
/** Points of a sensor in space that a page is told. */
constexpr std::size_t kMostSpacePoints = 4000;

/** The records of one sensor as it gave them, the first points of each; empty without the sensor.
 */
QV_API std::string recordMessage(const std::string& sensor, const session::Snapshot& snapshot);

/** Tells what all sensors see, in the map, with the height above the floor. */
QV_API std::string spaceMessage(const session::Snapshot& snapshot);

}  // namespace QV::outlets
