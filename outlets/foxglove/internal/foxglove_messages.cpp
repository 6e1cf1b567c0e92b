#include "outlets/foxglove/internal/foxglove_messages.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

#include <nlohmann/json.hpp>

#include "outlets/foxglove/internal/foxglove_schemas.h"
#include "outlets/web/internal/base64.h"
#include "outlets/web/internal/page_points.h"

namespace QV::outlets::foxglove {
namespace {

using nlohmann::ordered_json;

static_assert(std::endian::native == std::endian::little, "numbers are sent as they lie in memory");

constexpr int kUnsignedByte = 1;
constexpr int kFloat = 7;
constexpr int kErrorLevel = 2;
constexpr std::size_t kMostPoints = 10'000;
// Simulated points have no height of their own.
constexpr float kPointHeight = 0.5f;
constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;

std::string toText(const ordered_json& message) {
  return message.dump(-1, ' ', false, ordered_json::error_handler_t::replace);
}

ordered_json toJson(ko::Clock::time_point time) {
  const std::int64_t count = std::max<std::int64_t>(time.time_since_epoch().count(), 0);
  return {{"sec", count / kNanosecondsPerSecond}, {"nsec", count % kNanosecondsPerSecond}};
}

ordered_json positionOf(const Math::Pose2D& pose) {
  return {{"x", pose.x}, {"y", pose.y}, {"z", 0.0}};
}

ordered_json turnOf(const Math::Pose2D& pose) {
  return {{"x", 0.0}, {"y", 0.0}, {"z", std::sin(pose.theta / 2)}, {"w", std::cos(pose.theta / 2)}};
}

ordered_json toJson(const Math::Pose2D& pose) {
  return {{"position", positionOf(pose)}, {"orientation", turnOf(pose)}};
}

ordered_json field(const char* name, int offset, int type) {
  return {{"name", name}, {"offset", offset}, {"type", type}};
}

template <typename T>
void append(std::string& bytes, const T& value) {
  char copy[sizeof value];
  std::memcpy(copy, &value, sizeof value);
  bytes.append(copy, sizeof value);
}

std::vector<Math::Position3D> pointsOf(const session::SensorState& sensor, session::Frame frame) {
  std::vector<Math::Position3D> points;
  if (frame == session::Frame::map) {
    for (const auto& point : pagePointsOf(sensor.marks)) points.emplace_back(point, kPointHeight);
    return points;
  }
  for (const auto& record : sensor.records) {
    const float reach = record.fieldOfView.maxRange;
    const auto placed = Math::pointsInFrame(record);
    for (std::size_t i = 0; i < placed.size(); ++i) {
      // Rays that met nothing end there.
      if (reach > 0.0f && Math::norm(record.points[i]) >= reach) continue;
      points.push_back(placed[i]);
    }
  }
  return points;
}

std::string bytesOf(const std::vector<Math::Position3D>& points) {
  const std::size_t step = (points.size() + kMostPoints - 1) / kMostPoints;
  std::string bytes;
  for (std::size_t i = 0; i < points.size(); i += step) {
    append(bytes, points[i].x);
    append(bytes, points[i].y);
    append(bytes, points[i].z);
  }
  return bytes;
}

int levelOf(ko::log::Level level) {
  switch (level) {
    case ko::log::Level::verbose:
      return 1;
    case ko::log::Level::info:
      return 2;
    case ko::log::Level::warning:
      return 3;
    case ko::log::Level::error:
      return 4;
    case ko::log::Level::fatal:
      return 5;
    case ko::log::Level::silent:
      break;
  }
  return 0;
}

}  // namespace

std::string serverInfo(const std::string& name, const std::string& session) {
  return toText({{"op", "serverInfo"},
                 {"name", name},
                 {"capabilities", ordered_json::array()},
                 {"supportedEncodings", ordered_json::array()},
                 {"metadata", ordered_json::object()},
                 {"sessionId", session}});
}

std::string advertisement(const std::vector<Channel>& channels) {
  ordered_json entries = ordered_json::array();
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
  append(frame, subscription);
  append(frame, static_cast<std::uint64_t>(time.time_since_epoch().count()));
  return frame.append(payload);
}

std::string frameTransform(const session::Snapshot& snapshot) {
  return toText({{"timestamp", toJson(snapshot.time)},
                 {"parent_frame_id", "map"},
                 {"child_frame_id", "robot"},
                 {"translation", positionOf(snapshot.pose)},
                 {"rotation", turnOf(snapshot.pose)}});
}

std::string pointCloud(const session::SensorState& sensor, const session::Snapshot& snapshot) {
  const auto& records = sensor.records;
  return toText({{"timestamp", toJson(records.empty() ? snapshot.time : records.back().timestamp)},
                 {"frame_id", getName(snapshot.frame)},
                 {"pose", toJson(Math::Pose2D())},
                 {"point_stride", 12},
                 {"fields", {field("x", 0, kFloat), field("y", 4, kFloat), field("z", 8, kFloat)}},
                 {"data", toBase64(bytesOf(pointsOf(sensor, snapshot.frame)))}});
}

std::string grid(const OccupancyMap& map, ko::Clock::time_point time) {
  std::string cells;
  for (const float occupancy : map.getCells()) {
    const bool unknown = occupancy == OccupancyMap::kUnknown;
    cells += static_cast<char>(unknown ? 255 : std::lround(100.0f * occupancy));
  }
  return toText({{"timestamp", toJson(time)},
                 {"frame_id", "map"},
                 {"pose", toJson(map.getOrigin())},
                 {"column_count", map.getWidth()},
                 {"cell_size", {{"x", map.getResolution()}, {"y", map.getResolution()}}},
                 {"row_stride", map.getWidth()},
                 {"cell_stride", 1},
                 {"fields", {field("occupancy", 0, kUnsignedByte)}},
                 {"data", toBase64(cells)}});
}

std::string logLine(const ko::log::Record& line) {
  return toText({{"timestamp", toJson(line.timestamp)},
                 {"level", levelOf(line.level)},
                 {"message", line.message},
                 {"name", line.category + "." + line.method},
                 {"file", ""},
                 {"line", 0}});
}

}  // namespace QV::outlets::foxglove
