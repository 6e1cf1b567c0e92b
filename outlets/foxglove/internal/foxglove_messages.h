#pragma once

#include <cstdint>
#include <string>

#include <opencv2/core.hpp>

#include "platform/ko/log.h"
#include "platform/navigation/occupancy_map.h"
#include "session/snapshot.h"

/** The messages of the channels, in JSON, by the schemas of foxglove_schemas.h. */
namespace QV::outlets::foxglove {

/** The pose of the robot in the map. */
std::string frameTransform(const session::Snapshot& snapshot);
/** The zero of the coordinates of the map's file in the map, as the frame "utm". */
std::string utmTransform(const MapShift& shift, ko::Clock::time_point time);
/**
 * The points of a sensor, an echo as points along its arc, at most 10,000; of a virtual robot in
 * its ground frame.
 */
QV_API std::string pointCloud(const session::SensorState& sensor,
                              const session::Snapshot& snapshot);
/** Occupancies of a map: 0 free to 100 solid, 255 unknown. */
std::string grid(const OccupancyMap& map, ko::Clock::time_point time);
/** The field of view of each started sensor, on the floor. */
QV_API std::string fieldsOfView(const session::Snapshot& snapshot);
/** A depth frame in millimetres, 0 where there is none; `sensor` names the camera's frame. */
QV_API std::string depthImage(const cv::Mat_<std::uint16_t>& depth, const std::string& sensor,
                              ko::Clock::time_point time);
std::string logLine(const ko::log::Record& line);

}  // namespace QV::outlets::foxglove
