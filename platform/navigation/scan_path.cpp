#include "platform/navigation/scan_path.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>

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
    if (castTogether != nullptr) {
      fan.store->fetch(static_cast<int>(fan.start.x), static_cast<int>(fan.start.y));
    }
  }

  /** The ways, in cells, of up to FanCast::kMostRays rays; infinity for those that hit nothing. */
  void cast(const double* cosines, const double* sines, int count, double* ways) const {
    if (castTogether != nullptr && !castTogether(fan, cosines, sines, count, ways)) return;
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
  if (!isFinite(scanPose)) {
    for (int i = 0; i < fan.rayCount; ++i) readings[i] = {fieldOfView.maxRange, fan.angles[i], 1};
    return;
  }
  const Caster caster(map, scanPose, fieldOfView.maxRange, occupiedAbove, path);
  const double resolution = map.getResolution();
  std::array<double, FanCast::kMostRays + FanCast::kMore> ways;
  for (int begin = 0; begin < fan.rayCount; begin += FanCast::kMostRays) {
    const int count = std::min(FanCast::kMostRays, fan.rayCount - begin);
    caster.cast(&fan.cosines[begin], &fan.sines[begin], count, ways.data());
    toReadings(ways.data(), &fan.angles[begin], count, resolution, fieldOfView, &readings[begin]);
  }
}

}  // namespace QV::detail
