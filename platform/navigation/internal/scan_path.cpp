#include "platform/navigation/internal/scan_path.h"

#include <algorithm>
#include <array>
#include <limits>

#include "platform/navigation/internal/fan_cast.h"
#include "platform/navigation/internal/fan_directions.h"
#include "platform/navigation/internal/scan_caster.h"

namespace QV::detail {
namespace {

/** The readings of `count` rays that go these ways; lengths are in metres but for the ways. */
void toReadings(const double* ways, const float* angles, int count, double resolution,
                const Math::SensorFieldOfView2D& fieldOfView, RangeReading* readings) {
  const float minRange = fieldOfView.minRange;
  const float maxRange = fieldOfView.maxRange;
  const float farthest = std::min(maxRange, std::numeric_limits<float>::max());
  for (int i = 0; i < count; ++i) {
    const auto range = static_cast<float>(ways[i] * resolution);
    const bool misses = range > farthest;
    readings[i] = {misses ? maxRange : std::max(range, minRange), angles[i], misses};
  }
}

}  // namespace

bool isSupported(ScanPath path) {
  return path == ScanPath::plain || findCastRays(path) != nullptr;
}

void simulateScan(const OccupancyMap& map, const Math::SensorFieldOfView2D& fieldOfView,
                  const Math::Pose2D& scanPose, std::vector<RangeReading>& readings,
                  float occupiedAbove, ScanPath path) {
  if (!makesSense(fieldOfView)) return readings.clear();
  const FanDirections& fan = findFanDirections(fieldOfView.angularRange, fieldOfView.rayCount);
  readings.resize(fan.angles.size());
  ScanCaster caster(map, fieldOfView.maxRange, occupiedAbove, path);
  if (!caster.moveTo(scanPose)) {
    for (int i = 0; i < fan.rayCount; ++i) readings[i] = {fieldOfView.maxRange, fan.angles[i], 1};
    return;
  }
  const double resolution = map.getResolution();
  std::array<double, FanCast::kMostRays + FanCast::kMore> ways;
  for (int begin = 0; begin < fan.rayCount; begin += FanCast::kMostRays) {
    const int count = std::min(FanCast::kMostRays, fan.rayCount - begin);
    caster.cast(&fan.cosines[begin], &fan.sines[begin], count, ways.data());
    toReadings(ways.data(), &fan.angles[begin], count, resolution, fieldOfView, &readings[begin]);
  }
}

}  // namespace QV::detail
