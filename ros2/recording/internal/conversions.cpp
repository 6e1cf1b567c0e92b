#include "ros2/recording/internal/conversions.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <stdexcept>
#include <utility>

namespace QV::ros2 {
namespace {

constexpr std::int64_t kSecond = 1'000'000'000;

/** The greatest of the four parts first: no root of a small number is divided by. */
geometry_msgs::Quaternion rotationOf(const Math::Transform& t) {
  const double squares[] = {1.0 + t(0, 0) - t(1, 1) - t(2, 2), 1.0 - t(0, 0) + t(1, 1) - t(2, 2),
                            1.0 - t(0, 0) - t(1, 1) + t(2, 2), 1.0 + t(0, 0) + t(1, 1) + t(2, 2)};
  const auto greatest = std::max_element(std::begin(squares), std::end(squares)) - squares;
  const double twice = std::sqrt(std::max(squares[greatest], 1e-12));
  const double part = 0.5 / twice;
  const double xy = part * (t(0, 1) + t(1, 0));
  const double xz = part * (t(0, 2) + t(2, 0));
  const double yz = part * (t(1, 2) + t(2, 1));
  const double x = part * (t(2, 1) - t(1, 2));
  const double y = part * (t(0, 2) - t(2, 0));
  const double z = part * (t(1, 0) - t(0, 1));
  if (greatest == 0) return {0.5 * twice, xy, xz, x};
  if (greatest == 1) return {xy, 0.5 * twice, yz, y};
  if (greatest == 2) return {xz, yz, 0.5 * twice, z};
  return {x, y, z, 0.5 * twice};
}

float headingOf(const geometry_msgs::Quaternion& q) {
  return static_cast<float>(
      std::atan2(2.0 * (q.w * q.z + q.x * q.y), 1.0 - 2.0 * (q.y * q.y + q.z * q.z)));
}

std::int8_t percentOf(float occupancy) {
  if (occupancy == OccupancyMap::kUnknown) return -1;
  return static_cast<std::int8_t>(std::lround(100.0f * occupancy));
}

}  // namespace

std::uint64_t logTimeOf(ko::Clock::time_point time) {
  const auto count = (time.time_since_epoch() + kTimeOffset).count();
  return static_cast<std::uint64_t>(std::max<std::int64_t>(count, 0));
}

ko::Clock::time_point timeOf(std::uint64_t logTime) {
  return ko::Clock::time_point(ko::Duration(static_cast<std::int64_t>(logTime)) - kTimeOffset);
}

builtin_interfaces::Time stampOf(ko::Clock::time_point time) {
  const auto count = static_cast<std::int64_t>(logTimeOf(time));
  return {static_cast<std::int32_t>(count / kSecond), static_cast<std::uint32_t>(count % kSecond)};
}

ko::Clock::time_point timeOf(const builtin_interfaces::Time& stamp) {
  return timeOf(static_cast<std::uint64_t>(stamp.sec * kSecond + stamp.nanosec));
}

std_msgs::Header headerOf(ko::Clock::time_point time, const std::string& frame) {
  return {stampOf(time), frame};
}

geometry_msgs::Point pointOf(const Math::Position3D& position) {
  return {position.x, position.y, position.z};
}

geometry_msgs::Pose poseOf(const Math::Pose2D& pose) {
  const double half = 0.5 * pose.theta;
  return {{pose.x, pose.y, 0.0}, {0.0, 0.0, std::sin(half), std::cos(half)}};
}

Math::Pose2D poseOf(const geometry_msgs::Pose& pose) {
  return {static_cast<float>(pose.position.x), static_cast<float>(pose.position.y),
          headingOf(pose.orientation)};
}

geometry_msgs::Pose poseOf(const Math::Transform& transform) {
  return {pointOf(Math::position3DFromTransform(transform)), rotationOf(transform)};
}

geometry_msgs::Transform transformOf(const geometry_msgs::Pose& pose) {
  return {{pose.position.x, pose.position.y, pose.position.z}, pose.orientation};
}

Math::Transform transformOf(const geometry_msgs::Transform& transform) {
  const auto& [x, y, z, w] = transform.rotation;
  const auto& at = transform.translation;
  const double rows[] = {
      1 - 2 * (y * y + z * z), 2 * (x * y - w * z),     2 * (x * z + w * y),     at.x,
      2 * (x * y + w * z),     1 - 2 * (x * x + z * z), 2 * (y * z - w * x),     at.y,
      2 * (x * z - w * y),     2 * (y * z + w * x),     1 - 2 * (x * x + y * y), at.z};
  return Math::Transform(std::vector<float>(std::begin(rows), std::end(rows)));
}

Math::Transform cameraInOptics() {
  constexpr float kQuarter = 0.5f * std::numbers::pi_v<float>;
  return Math::inverse(Math::rotationFrom3DRotation(-kQuarter, 0.0f, -kQuarter));
}

nav_msgs::OccupancyGrid gridOf(const OccupancyMap& map) {
  nav_msgs::OccupancyGrid grid;
  grid.header = headerOf(ko::Clock::time_point(), "map");
  grid.info.map_load_time = grid.header.stamp;
  grid.info.resolution = map.getResolution();
  grid.info.width = static_cast<std::uint32_t>(map.getWidth());
  grid.info.height = static_cast<std::uint32_t>(map.getHeight());
  grid.info.origin = poseOf(map.getOrigin());
  grid.data.reserve(map.getCells().size());
  std::ranges::transform(map.getCells(), std::back_inserter(grid.data), percentOf);
  return grid;
}

OccupancyMap mapOf(const nav_msgs::OccupancyGrid& grid) {
  std::vector<float> cells;
  cells.reserve(grid.data.size());
  for (const std::int8_t percent : grid.data) {
    const bool known = percent >= 0 && percent <= 100;
    cells.push_back(known ? static_cast<float>(percent) / 100.0f : OccupancyMap::kUnknown);
  }
  constexpr auto kMost = static_cast<std::uint32_t>(OccupancyMap::kMaxSide);
  if (grid.info.width > kMost || grid.info.height > kMost)
    throw std::runtime_error("a map of at most 1048576 cells on a side expected");
  return OccupancyMap(static_cast<int>(grid.info.width), static_cast<int>(grid.info.height),
                      grid.info.resolution, poseOf(grid.info.origin), std::move(cells));
}

qv_msgs::MetricalData messageWithoutPoints(const Math::MetricalData& record) {
  const auto& fov = record.fieldOfView;
  qv_msgs::MetricalData message;
  message.sensor_name = record.sensorName;
  message.family_name = record.familyName;
  message.field_of_view = {fov.minRange, fov.maxRange, fov.angularRange, fov.rayCount};
  message.sensor_transform = record.sensorTransform.values;
  message.timestamp = record.timestamp.time_since_epoch().count();
  return message;
}

Math::MetricalData recordOf(const qv_msgs::MetricalData& message) {
  Math::MetricalData record;
  record.sensorName = message.sensor_name;
  record.familyName = message.family_name;
  const auto& fov = message.field_of_view;
  record.fieldOfView = {fov.min_range, fov.max_range, fov.angular_range, fov.ray_count};
  record.sensorTransform.values = message.sensor_transform;
  record.points.reserve(message.points.size());
  for (const auto& point : message.points) record.points.emplace_back(point.x, point.y, point.z);
  record.timestamp = ko::Clock::time_point(ko::Duration(message.timestamp));
  return record;
}

}  // namespace QV::ros2
