#pragma once

#include <string>

#include "platform/ko/log.h"
#include "platform/navigation/occupancy_map.h"
#include "session/snapshot.h"

/** The messages of the channels, in JSON, by the schemas of foxglove_schemas.h. */
namespace QV::outlets::foxglove {

/** Where the robot is in the map. */
std::string frameTransform(const session::Snapshot& snapshot);
/**
 * What a sensor met, an echo as points along its arc, at most 10,000: of a virtual robot in its
 * ground frame.
 */
QV_API std::string pointCloud(const session::SensorState& sensor,
                              const session::Snapshot& snapshot);
/** Occupancies of a map: 0 free to 100 solid, 255 unknown. */
std::string grid(const OccupancyMap& map, ko::Clock::time_point time);
std::string logLine(const ko::log::Record& line);

}  // namespace QV::outlets::foxglove
