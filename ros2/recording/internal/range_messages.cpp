#include "ros2/recording/internal/range_messages.h"

#include <limits>

namespace QV::ros2 {
namespace {

constexpr float kNoEcho = std::numeric_limits<float>::infinity();

}  // namespace

float rangeIn(const Math::SensorFieldOfView2D& view, float range) {
  if (range >= view.maxRange) return kNoEcho;
  return range < view.minRange ? -kNoEcho : range;
}

sensor_msgs::Range rangeOf(const Math::SensorFieldOfView2D& view) {
  sensor_msgs::Range message;
  message.field_of_view = view.angularRange;
  message.min_range = view.minRange;
  message.max_range = view.maxRange;
  return message;
}

sensor_msgs::Range contactOf(const Math::SensorFieldOfView2D& view, bool isThere) {
  auto message = rangeOf(view);
  message.min_range = message.max_range;
  message.radiation_type = 1;
  message.range = isThere ? -kNoEcho : kNoEcho;
  return message;
}

sensor_msgs::LaserScan scanOf(const Math::SensorFieldOfView2D& view, std::size_t beams) {
  sensor_msgs::LaserScan scan;
  scan.angle_max = 0.5f * view.angularRange;
  scan.angle_min = -scan.angle_max;
  scan.angle_increment = beams > 1 ? view.angularRange / static_cast<float>(beams - 1) : 0.0f;
  scan.range_min = view.minRange;
  scan.range_max = view.maxRange;
  scan.ranges.reserve(beams);
  return scan;
}

}  // namespace QV::ros2
