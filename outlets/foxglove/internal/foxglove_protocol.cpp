#include "outlets/foxglove/internal/foxglove_protocol.h"

#include "outlets/foxglove/internal/foxglove_schemas.h"
#include "outlets/foxglove/internal/little_endian.h"
#include "outlets/internal/json_values.h"

namespace QV::outlets::foxglove {
namespace {

constexpr int kErrorLevel = 2;

}  // namespace

std::string serverInfo(const std::string& name, const std::string& session, bool hears) {
  const auto listOf = [hears](const char* what) {
    return hears ? Json::array({what}) : Json::array();
  };
  return toText({{"op", "serverInfo"},
                 {"name", name},
                 {"capabilities", listOf("clientPublish")},
                 {"supportedEncodings", listOf("json")},
                 {"metadata", Json::object()},
                 {"sessionId", session}});
}

std::string advertisement(const std::vector<Channel>& channels) {
  Json entries = Json::array();
  for (const Channel& channel : channels) {
    entries.push_back({{"id", channel.id},
                       {"topic", channel.topic},
                       {"encoding", "json"},
                       {"schemaName", channel.schema},
                       {"schemaEncoding", "jsonschema"},
                       {"schema", schemaText(channel.schema)}});
  }
  return toText({{"op", "advertise"}, {"channels", std::move(entries)}});
}

std::string errorStatus(const std::string& message) {
  return toText({{"op", "status"}, {"level", kErrorLevel}, {"message", message}});
}

std::string dataFrame(std::uint32_t subscription, ko::Clock::time_point time,
                      const std::string& payload) {
  constexpr char kMessageData = 1;
  std::string frame(1, kMessageData);
  appendBytes(frame, subscription);
  appendBytes(frame, static_cast<std::uint64_t>(inNanoseconds(time)));
  return frame.append(payload);
}

}  // namespace QV::outlets::foxglove
