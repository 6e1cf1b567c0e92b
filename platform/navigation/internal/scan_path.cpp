#include "platform/navigation/internal/scan_path.h"

#include <algorithm>
#include <array>

#include "platform/navigation/internal/fan_cast.h"
#include "platform/navigation/internal/fan_directions.h"
#include "platform/navigation/internal/scan_caster.h"

namespace QV::detail {

bool isSupported(ScanPath path) {
  return path == ScanPath::plain || findScanSteps(path).castRays != nullptr;
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
  const RangeLimits limits(fieldOfView, map.getResolution());
  std::array<double, FanCast::kMostRays + FanCast::kMore> ways;
  for (int begin = 0; begin < fan.rayCount; begin += FanCast::kMostRays) {
    const int count = std::min(FanCast::kMostRays, fan.rayCount - begin);
    caster.cast(&fan.cosines[begin], &fan.sines[begin], count, ways.data());
    caster.getSteps().toReadings(ways.data(), &fan.angles[begin], count, limits, &readings[begin]);
  }
}

}  // namespace QV::detail
