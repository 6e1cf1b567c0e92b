#include "outlets/foxglove/internal/foxglove_messages.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "outlets/foxglove/internal/little_endian.h"
#include "outlets/internal/base64.h"
#include "outlets/internal/family_colour.h"
#include "outlets/internal/json_values.h"
#include "outlets/internal/seen_places.h"

namespace QV::outlets::foxglove {
namespace {

constexpr int kUnsignedByte = 1;
constexpr int kFloat = 7;
constexpr std::size_t kMostPoints = 10'000;
// A line through all of its points.
constexpr int kLineStrip = 0;
constexpr double kLinePixels = 1.5;
// Entities disappear unless they are sent again.
constexpr ko::Duration kEntityLifetime{500'000'000};
constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;

Json toJson(ko::Clock::time_point time) {
  const std::int64_t count = std::max<std::int64_t>(inNanoseconds(time), 0);
  return {{"sec", count / kNanosecondsPerSecond}, {"nsec", count % kNanosecondsPerSecond}};
}

Json positionOf(const Math::Pose2D& pose) {
  return {{"x", pose.x}, {"y", pose.y}, {"z", 0.0}};
}

Json turnOf(const Math::Pose2D& pose) {
  return {{"x", 0.0}, {"y", 0.0}, {"z", std::sin(pose.theta / 2)}, {"w", std::cos(pose.theta / 2)}};
}

Json toJson(const Math::Pose2D& pose) {
  return {{"position", positionOf(pose)}, {"orientation", turnOf(pose)}};
}

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

Json colourOf(const std::string& family) {
  const auto [red, green, blue] = outlets::colourOfFamily(family);
  return {{"r", red / 255.0}, {"g", green / 255.0}, {"b", blue / 255.0}, {"a", 1.0}};
}

// Returns the outline: apex, right side, arc, left side, apex.
Json outlineOf(const session::SensorState::View& view) {
  constexpr int kParts = 24;
  const auto& field = view.fieldOfView;
  Json points = Json::array();
  const auto add = [&](float range, float angle) {
    const auto place = view.apex * Math::Position2D::fromPolarCoordinates(range, angle);
    points.push_back({{"x", place.x}, {"y", place.y}, {"z", 0.0}});
  };
  add(0.0f, 0.0f);
  for (int i = 0; i <= kParts; ++i) {
    const float share = static_cast<float>(i) / kParts - 0.5f;
    add(field.maxRange, share * field.angularRange);
  }
  add(0.0f, 0.0f);
  return points;
}

Json entityOf(const session::SensorState& sensor, ko::Clock::time_point time) {
  const Json line = {{"type", kLineStrip},
                     {"pose", toJson(Math::Pose2D())},
                     {"thickness", kLinePixels},
                     {"scale_invariant", true},
                     {"points", outlineOf(*sensor.view)},
                     {"color", colourOf(sensor.family)},
                     {"colors", Json::array()},
                     {"indices", Json::array()}};
  Json entity = {{"timestamp", toJson(time)},
                 {"frame_id", "map"},
                 {"id", sensor.name},
                 {"lifetime", toJson(ko::Clock::time_point(kEntityLifetime))},
                 {"frame_locked", false}};
  for (const char* none :
       {"metadata", "arrows", "cubes", "spheres", "cylinders", "triangles", "texts", "models"}) {
    entity[none] = Json::array();
  }
  entity["lines"] = Json::array({line});
  return entity;
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

std::string fieldsOfView(const session::Snapshot& snapshot) {
  Json entities = Json::array();
  for (const session::SensorState& sensor : snapshot.sensors) {
    if (sensor.started && sensor.view) entities.push_back(entityOf(sensor, snapshot.time));
  }
  return toText({{"deletions", Json::array()}, {"entities", std::move(entities)}});
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
