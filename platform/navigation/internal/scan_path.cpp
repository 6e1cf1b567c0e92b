#include "platform/navigation/internal/scan_path.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "platform/navigation/internal/fan_cast.h"
#include "platform/navigation/internal/fan_directions.h"
#include "platform/navigation/internal/grid_ray.h"
#include "platform/navigation/internal/plain_walk.h"
#include "platform/navigation/internal/scan_store.h"
#include "platform/navigation/internal/strip_image.h"

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
    fan.store = path == ScanPath::plain ? nullptr : map.getScanStore(occupiedAbove);
    fan.width = map.getWidth();
    fan.height = map.getHeight();
    fan.start = map.getGridFrame().toGrid(Math::position2DFromPose2D(pose));
    fan.reach = maxRange / static_cast<double>(map.getResolution());
    if (fan.store != nullptr && fan.startsInside()) castTogether = findCastRays(path);
    nothingInReach = castTogether != nullptr && xIsFreeAround();
    if (!nothingInReach) xPrepare(pose.theta);
  }

  /** Whether all rays miss, known without casting any. */
  bool isNothingInReach() const { return nothingInReach; }

  /** The ways, in cells, of up to FanCast::kMostRays rays; infinity for those that hit nothing. */
  void cast(const double* cosines, const double* sines, int count, double* ways) const {
    if (castTogether != nullptr && !castTogether(fan, cosines, sines, count, ways)) return;
    for (int i = 0; i < count; ++i) {
      if (castTogether == nullptr || std::isnan(ways[i])) ways[i] = castOne(cosines[i], sines[i]);
    }
  }

 private:
  bool xIsFreeAround() const {
    // One for where in its cell the start is, one for rounding.
    constexpr int kMargin = 2;
    return fan.reach < StripImage::kFarthestAround - kMargin &&
           fan.store->isFreeAround(static_cast<int>(fan.start.x), static_cast<int>(fan.start.y),
                                   static_cast<int>(fan.reach) + kMargin);
  }

  void xPrepare(double theta) {
    const double heading = theta - map.getOrigin().theta;
    fan.cosHeading = std::cos(heading);
    fan.sinHeading = std::sin(heading);
    if (castTogether == nullptr) return;
    fan.store->fetch(static_cast<int>(fan.start.x), static_cast<int>(fan.start.y));
  }

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
  bool nothingInReach = false;
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

void toMisses(const FanDirections& fan, float maxRange, std::vector<RangeReading>& readings) {
  for (int i = 0; i < fan.rayCount; ++i) readings[i] = {maxRange, fan.angles[i], 1};
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
  if (!isFinite(scanPose)) return toMisses(fan, fieldOfView.maxRange, readings);
  const Caster caster(map, scanPose, fieldOfView.maxRange, occupiedAbove, path);
  if (caster.isNothingInReach()) return toMisses(fan, fieldOfView.maxRange, readings);
  const double resolution = map.getResolution();
  std::array<double, FanCast::kMostRays + FanCast::kMore> ways;
  for (int begin = 0; begin < fan.rayCount; begin += FanCast::kMostRays) {
    const int count = std::min(FanCast::kMostRays, fan.rayCount - begin);
    caster.cast(&fan.cosines[begin], &fan.sines[begin], count, ways.data());
    toReadings(ways.data(), &fan.angles[begin], count, resolution, fieldOfView, &readings[begin]);
  }
}

}  // namespace QV::detail
