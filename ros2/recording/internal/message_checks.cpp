#include "ros2/recording/internal/message_checks.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <stdexcept>
#include <string>

namespace QV::ros2 {
namespace {

constexpr double kLengthTolerance = 0.1;
// Two turns: some lidars count from one end of a turn to the other, and see a little of it twice.
constexpr float kMostAngle = 4.0f * std::numbers::pi_v<float>;

[[noreturn]] void refuse(const std::string& expected, const std::string& given) {
  throw std::runtime_error(expected + " expected, " + given + " given");
}

// No robot is farther from its map's origin, whatever the earth's coordinates are counted from.
constexpr double kFarthest = 1e8;

// The comparison is written so that NaN is refused as well.
bool isNear(const geometry_msgs::Vector3& v) {
  return std::abs(v.x) <= kFarthest && std::abs(v.y) <= kFarthest && std::abs(v.z) <= kFarthest;
}

}  // namespace

void checkMessage(const sensor_msgs::LaserScan& scan) {
  const std::size_t beams = scan.ranges.size();
  if (beams == 0 || beams > kMostBeams)
    refuse("1 to " + std::to_string(kMostBeams) + " ranges", std::to_string(beams));
  const float span = std::abs(scan.angle_increment) * static_cast<float>(beams);
  // The comparison is written so that NaN is refused as well.
  if (!(std::abs(scan.angle_min) <= kMostAngle && span <= kMostAngle) ||
      (beams > 1 && scan.angle_increment == 0.0f))
    refuse("beams at different angles within two turns",
           std::string("angle_increment ") + std::to_string(scan.angle_increment) +
               " rad from angle_min " + std::to_string(scan.angle_min) + " rad");
  if (std::ranges::all_of(scan.ranges, [](float range) { return std::isnan(range); }))
    refuse("ranges", "only NaN");
}

sensor_msgs::Range rangeFromCdr(BytesView cdr) {
  try {
    return fromCdr<sensor_msgs::Range>(cdr);
  } catch (const std::runtime_error&) {
    sensor_msgs::Range range;
    sensor_msgs::Range::getTypeWithoutVariance().decode(cdr, &range);
    return range;
  }
}

void checkMessage(const sensor_msgs::Range& range) {
  if (std::isnan(range.range)) refuse("a range", "NaN");
}

void checkMessage(const sensor_msgs::PointCloud2& cloud) {
  const std::size_t row = std::size_t{cloud.point_step} * cloud.width;
  const std::size_t step = cloud.height > 1 ? cloud.row_step : row;
  const std::size_t rows = std::max<std::size_t>(cloud.height, 1);
  if (cloud.point_step == 0 || step < row || cloud.data.size() / rows < step)
    refuse(std::to_string(cloud.height) + " rows of " + std::to_string(cloud.width) +
               " points of " + std::to_string(cloud.point_step) + " bytes",
           std::to_string(cloud.data.size()) + " bytes");
}

void checkMessage(const nav_msgs::Odometry& odometry) {
  const auto& at = odometry.pose.pose.position;
  const auto& [linear, angular] = odometry.twist.twist;
  checkPosition({at.x, at.y, at.z});
  if (!isNear(linear) || !isNear(angular))
    refuse("velocities up to 1e8 m/s and rad/s", "a larger number, or one that is not finite,");
  soundRotation(odometry.pose.pose.orientation);
}

void checkMessage(const sensor_msgs::JointState& joints) {
  if (!joints.position.empty() && joints.position.size() != joints.name.size())
    refuse("a position for each of " + std::to_string(joints.name.size()) + " joints",
           std::to_string(joints.position.size()));
  if (!std::ranges::all_of(joints.position, [](double p) { return std::isfinite(p); }))
    refuse("positions", "a number that is not finite");
}

void checkPosition(const geometry_msgs::Vector3& position) {
  if (!isNear(position))
    refuse("a position within 1e8 m", "a larger number, or one that is not finite,");
}

geometry_msgs::Quaternion soundRotation(const geometry_msgs::Quaternion& rotation) {
  const auto& [x, y, z, w] = rotation;
  const double length = std::sqrt(x * x + y * y + z * z + w * w);
  // The comparison is written so that NaN is refused as well.
  if (!(std::abs(length - 1.0) <= kLengthTolerance))
    refuse("a rotation of length 1", std::to_string(length));
  return {x / length, y / length, z / length, w / length};
}

}  // namespace QV::ros2
