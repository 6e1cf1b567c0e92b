#include "outlets/foxglove/internal/foxglove_messages.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "outlets/foxglove/internal/foxglove_values.h"
#include "outlets/foxglove/internal/little_endian.h"
#include "outlets/internal/base64.h"
#include "outlets/internal/seen_places.h"

namespace QV::outlets::foxglove {
namespace {

constexpr int kUnsignedByte = 1;
constexpr int kFloat = 7;
constexpr std::size_t kMostPoints = 10'000;

Json field(const char* name, int offset, int type) {
  return {{"name", name}, {"offset", offset}, {"type", type}};
}

// Returns points in the map frame, or in the present ground frame if records are in that.
std::vector<Math::Position3D> pointsOf(const session::SensorState& sensor,
                                       const session::Snapshot& snapshot) {
  std::vector<Math::Position3D> points = seenPlacesOf(sensor.marks);
  if (snapshot.frame == session::Frame::map) return points;
  const Math::Pose2D toRobot = Math::pinv(snapshot.pose);
  for (Math::Position3D& point : points) {
    point = {toRobot * Math::Position2D(point.x, point.y), point.z};
  }
  return points;
}

std::string bytesOf(const std::vector<Math::Position3D>& points) {
  const std::size_t step = (points.size() + kMostPoints - 1) / kMostPoints;
  std::string bytes;
  for (std::size_t i = 0; i < points.size(); i += step) {
    appendBytes(bytes, points[i].x);
    appendBytes(bytes, points[i].y);
    appendBytes(bytes, points[i].z);
  }
  return bytes;
}

// Silent is no level of a line.
int levelOf(ko::log::Level level) {
  static const std::map<ko::log::Level, int> levels = {{ko::log::Level::verbose, 1},
                                                       {ko::log::Level::info, 2},
                                                       {ko::log::Level::warning, 3},
                                                       {ko::log::Level::error, 4},
                                                       {ko::log::Level::fatal, 5}};
  const auto found = levels.find(level);
  return found == levels.end() ? 0 : found->second;
}

}  // namespace

std::string frameTransform(const session::Snapshot& snapshot) {
  return toText({{"timestamp", toJson(snapshot.time)},
                 {"parent_frame_id", "map"},
                 {"child_frame_id", "robot"},
                 {"translation", positionOf(snapshot.pose)},
                 {"rotation", turnOf(snapshot.pose)}});
}

std::string utmTransform(const MapShift& shift, ko::Clock::time_point time) {
  return toText({{"timestamp", toJson(time)},
                 {"parent_frame_id", "map"},
                 {"child_frame_id", "utm"},
                 {"translation", {{"x", -shift.x}, {"y", -shift.y}, {"z", 0.0}}},
                 {"rotation", turnOf({})}});
}

std::string pointCloud(const session::SensorState& sensor, const session::Snapshot& snapshot) {
  return toText({{"timestamp", toJson(snapshot.time)},
                 {"frame_id", getName(snapshot.frame)},
                 {"pose", toJson(Math::Pose2D())},
                 {"point_stride", 12},
                 {"fields", {field("x", 0, kFloat), field("y", 4, kFloat), field("z", 8, kFloat)}},
                 {"data", toBase64(bytesOf(pointsOf(sensor, snapshot)))}});
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

std::string depthImage(const cv::Mat_<std::uint16_t>& depth, const std::string& sensor,
                       ko::Clock::time_point time) {
  const cv::Mat_<std::uint16_t> whole = depth.isContinuous() ? depth : depth.clone();
  const std::size_t step = static_cast<std::size_t>(whole.cols) * sizeof(std::uint16_t);
  const std::string bytes(reinterpret_cast<const char*>(whole.data),
                          step * static_cast<std::size_t>(whole.rows));
  return toText({{"timestamp", toJson(time)},
                 {"frame_id", sensor},
                 {"width", whole.cols},
                 {"height", whole.rows},
                 {"encoding", "16UC1"},
                 {"step", step},
                 {"data", toBase64(bytes)}});
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
