#include "outlets/foxglove/internal/viewer_drive.h"

#include <algorithm>
#include <cstring>
#include <set>
#include <stdexcept>

#include "outlets/foxglove/internal/little_endian.h"
#include "outlets/foxglove/internal/viewer_request.h"

namespace QV::outlets::foxglove {
namespace {

using nlohmann::json;

constexpr char kClientMessageData = 1;
constexpr std::size_t kHeader = 1 + sizeof(std::uint32_t);

std::string textIn(const json& object, const char* name) {
  const json& member = memberOf(object, name);
  return member.is_string() ? member.get<std::string>() : std::string();
}

float componentIn(const json& velocity, const char* part, const char* axis, double most) {
  const json& value = memberOf(memberOf(velocity, part), axis);
  if (!value.is_number())
    throw std::invalid_argument(std::string(part) + "." + axis + ": a number expected");
  return static_cast<float>(std::clamp(value.get<double>(), -most, most));
}

}  // namespace

std::uint32_t driveChannelIn(const json& channel) {
  static const std::set<std::string> schemas = {"geometry_msgs/Twist", "geometry_msgs/msg/Twist"};
  const std::uint32_t id = numberIn(memberOf(channel, "id"));
  if (textIn(channel, "encoding") != "json" || schemas.count(textIn(channel, "schemaName")) == 0) {
    throw std::invalid_argument("only geometry_msgs/Twist in JSON is accepted");
  }
  return id;
}

ViewerMessage readViewerMessage(const std::string& frame) {
  if (frame.size() < kHeader || frame[0] != kClientMessageData) {
    throw std::invalid_argument("a message of a channel expected, other bytes given");
  }
  ViewerMessage message;
  std::memcpy(&message.channel, frame.data() + 1, sizeof message.channel);
  message.payload = frame.substr(kHeader);
  return message;
}

session::DriveCommand readVelocity(const std::string& payload) {
  const json velocity = json::parse(payload, nullptr, false);
  return {componentIn(velocity, "linear", "x", session::kFastest),
          componentIn(velocity, "angular", "z", session::kFastestTurn)};
}

}  // namespace QV::outlets::foxglove
