#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/ko/clock.h"

/** The messages of the Foxglove WebSocket protocol itself. Texts are JSON. */
namespace QV::outlets::foxglove {

/** A stream of messages of one schema that viewers subscribe to. */
struct Channel {
  std::uint32_t id;
  std::string topic;
  /** Such as "foxglove.Log". */
  std::string schema;
};

/** `hears`: true if viewers may publish. */
std::string serverInfo(const std::string& name, const std::string& session, bool hears);
/** Advertises the channels, with the schemas' texts. */
std::string advertisement(const std::vector<Channel>& channels);
/** A status message about a viewer's invalid request. */
std::string errorStatus(const std::string& message);

/** A message of a subscription as it is framed: binary, little-endian. */
std::string dataFrame(std::uint32_t subscription, ko::Clock::time_point time,
                      const std::string& payload);

}  // namespace QV::outlets::foxglove
