#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/ko/log.h"
#include "platform/navigation/occupancy_map.h"
#include "session/snapshot.h"

/** What viewers of the Foxglove WebSocket protocol are told. Texts are JSON. */
namespace QV::outlets::foxglove {

/** A stream of messages of one schema that viewers subscribe to. */
struct Channel {
  std::uint32_t id;
  std::string topic;
  /** Such as "foxglove.Log". */
  std::string schema;
};

std::string serverInfo(const std::string& name, const std::string& session);
/** With the schemas' texts. */
std::string advertisement(const std::vector<Channel>& channels);
/** Something that went wrong with what a viewer asked for. */
std::string errorStatus(const std::string& message);

/** A message of a subscription as it is framed: binary, little-endian. */
std::string dataFrame(std::uint32_t subscription, ko::Clock::time_point time,
                      const std::string& payload);

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
