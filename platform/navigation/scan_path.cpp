#include "platform/navigation/scan_path.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "platform/navigation/fan_cast.h"
#include "platform/navigation/fan_directions.h"
#include "platform/navigation/grid_frame.h"
#include "platform/navigation/grid_ray.h"
#include "platform/navigation/plain_walk.h"
#include "platform/navigation/scan_store.h"

namespace QV::detail {
namespace {

constexpr int kMostRaysOfAScan = 100000;

// Written so that a NaN makes no sense either.
bool makesSense(const Math::SensorFieldOfView2D& fieldOfView) {
  return fieldOfView.rayCount >= 1 && fieldOfView.rayCount <= kMostRaysOfAScan &&
         fieldOfView.angularRange >= 0.0f && fieldOfView.maxRange >= 0.0f &&
         fieldOfView.minRange <= fieldOfView.maxRange;
}

bool isFinite(const Math::Pose2D& pose) {
  return std::isfinite(pose.x) && std::isfinite(pose.y) && std::isfinite(pose.theta);
}

/** Casts the rays of a scan, some at a time. */
class Caster {
 public:
  Caster(const OccupancyMap& map, const Math::Pose2D& pose, float maxRange, float occupiedAbove,
         ScanPath path)
      : map(map), occupiedAbove(occupiedAbove) {
    const double heading = static_cast<double>(pose.theta) - map.getOrigin().theta;
    fan.store = path == ScanPath::plain ? nullptr : map.getScanStore(occupiedAbove);
    fan.width = map.getWidth();
    fan.height = map.getHeight();
    fan.start = toGrid(map, Math::position2DFromPose2D(pose));
    fan.cosHeading = std::cos(heading);
    fan.sinHeading = std::sin(heading);
    fan.reach = maxRange / static_cast<double>(map.getResolution());
    if (fan.store != nullptr && fan.startsInside()) castTogether = findCastRays(path);
  }

  /** The ways, in cells, of up to FanCast::kMostRays rays; infinity for those that hit nothing. */
  void cast(const double* cosines, const double* sines, int count, double* ways) const {
    if (castTogether != nullptr) castTogether(fan, cosines, sines, count, ways);
    for (int i = 0; i < count; ++i) {
      if (castTogether == nullptr || std::isnan(ways[i])) ways[i] = castOne(cosines[i], sines[i]);
    }
  }

 private:
  double castOne(double cosine, double sine) const {
    const GridRay ray =
        aimRay(fan.width, fan.height, fan.start, cosine * fan.cosHeading - sine * fan.sinHeading,
               sine * fan.cosHeading + cosine * fan.sinHeading, fan.reach);
    return walkPlainly(map, ray, occupiedAbove);
  }

  const OccupancyMap& map;
  float occupiedAbove;
  FanCast fan;
  CastRays* castTogether = nullptr;
};

RangeReading toReading(double range, float angle, const Math::SensorFieldOfView2D& fieldOfView) {
  const auto rounded = static_cast<float>(range);
  if (rounded > fieldOfView.maxRange || std::isinf(rounded)) {
    return {fieldOfView.maxRange, angle, 1};
  }
  return {std::max(rounded, fieldOfView.minRange), angle, 0};
}

}  // namespace

bool isSupported(ScanPath path) {
  return path != ScanPath::avx2 || findCastRays(path) != nullptr;
}

void simulateScan(const OccupancyMap& map, const Math::SensorFieldOfView2D& fieldOfView,
                  const Math::Pose2D& scanPose, std::vector<RangeReading>& readings,
                  float occupiedAbove, ScanPath path) {
  readings.clear();
  if (!makesSense(fieldOfView)) return;
  const FanDirections& fan = findFanDirections(fieldOfView.angularRange, fieldOfView.rayCount);
  readings.reserve(fan.angles.size());
  if (!isFinite(scanPose)) {
    for (const float angle : fan.angles) readings.push_back({fieldOfView.maxRange, angle, 1});
    return;
  }
  const Caster caster(map, scanPose, fieldOfView.maxRange, occupiedAbove, path);
  const double resolution = map.getResolution();
  std::array<double, FanCast::kMostRays + FanCast::kMore> ways;
  for (int begin = 0; begin < fan.rayCount; begin += FanCast::kMostRays) {
    const int count = std::min(FanCast::kMostRays, fan.rayCount - begin);
    caster.cast(&fan.cosines[begin], &fan.sines[begin], count, ways.data());
    for (int i = 0; i < count; ++i) {
      readings.push_back(toReading(ways[i] * resolution, fan.angles[begin + i], fieldOfView));
    }
  }
}

}  // namespace QV::detail
