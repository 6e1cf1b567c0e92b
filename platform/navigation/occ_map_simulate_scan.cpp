#include "platform/navigation/occ_map_simulate_scan.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>

#include "platform/navigation/grid_frame.h"
#include "platform/navigation/grid_ray.h"
#include "platform/navigation/plain_walk.h"

namespace QV {
namespace {

constexpr int kMaxRays = 100000;
constexpr float kFullTurn = 2.0f * std::numbers::pi_v<float>;

// Written so that a NaN makes no sense either.
bool makesSense(const Math::SensorFieldOfView2D& fieldOfView) {
  return fieldOfView.rayCount >= 1 && fieldOfView.rayCount <= kMaxRays &&
         fieldOfView.angularRange >= 0.0f && fieldOfView.maxRange >= 0.0f &&
         fieldOfView.minRange <= fieldOfView.maxRange;
}

bool isFinite(const Math::Pose2D& pose) {
  return std::isfinite(pose.x) && std::isfinite(pose.y) && std::isfinite(pose.theta);
}

/** Ray `i` looks along (i - centre) * step, so that mirrored rays mirror exactly. */
struct Spread {
  double centre;
  double step;
};

Spread spreadRays(const Math::SensorFieldOfView2D& fieldOfView) {
  const int count = fieldOfView.rayCount;
  if (count == 1) return {0.0, 0.0};
  if (fieldOfView.angularRange >= kFullTurn) return {count / 2.0, 2.0 * std::numbers::pi / count};
  return {(count - 1) / 2.0, static_cast<double>(fieldOfView.angularRange) / (count - 1)};
}

/** A scan that met nothing. */
void setMisses(const Math::SensorFieldOfView2D& fieldOfView, std::vector<RangeReading>& readings) {
  const Spread spread = spreadRays(fieldOfView);
  readings.resize(static_cast<std::size_t>(fieldOfView.rayCount));
  int ray = 0;
  for (RangeReading& reading : readings) {
    reading.range = fieldOfView.maxRange;
    reading.angle = static_cast<float>((ray++ - spread.centre) * spread.step);
    reading.status = 1;
  }
}

}  // namespace

void occMapSimulateScan(const OccupancyMap& map, const Math::SensorFieldOfView2D& fieldOfView,
                        const Math::Pose2D& scanPose, std::vector<RangeReading>& readings,
                        float occupiedAbove) {
  readings.clear();
  if (!makesSense(fieldOfView)) return;
  setMisses(fieldOfView, readings);
  if (!isFinite(scanPose)) return;

  const detail::GridPoint start = detail::toGrid(map, Math::position2DFromPose2D(scanPose));
  const double heading = static_cast<double>(scanPose.theta) - map.getOrigin().theta;
  const double resolution = map.getResolution();
  const double reach = fieldOfView.maxRange / resolution;
  for (RangeReading& reading : readings) {
    const double direction = heading + reading.angle;
    const detail::GridRay ray = detail::aimRay(map.getWidth(), map.getHeight(), start,
                                               std::cos(direction), std::sin(direction), reach);
    const auto range =
        static_cast<float>(detail::walkPlainly(map, ray, occupiedAbove) * resolution);
    if (range > fieldOfView.maxRange || std::isinf(range)) continue;
    reading.range = std::max(range, fieldOfView.minRange);
    reading.status = 0;
  }
}

}  // namespace QV
