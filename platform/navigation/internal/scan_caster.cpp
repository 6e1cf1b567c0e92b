#include "platform/navigation/internal/scan_caster.h"

#include <cmath>

#include "platform/navigation/internal/grid_ray.h"
#include "platform/navigation/internal/map_inside.h"
#include "platform/navigation/internal/plain_walk.h"
#include "platform/navigation/internal/strip_image.h"

namespace QV::detail {
namespace {

constexpr int kMostRaysOfAScan = 100000;

bool isFinite(const Math::Pose2D& pose) {
  return std::isfinite(pose.x) && std::isfinite(pose.y) && std::isfinite(pose.theta);
}

}  // namespace

// Written so that a NaN makes no sense either.
bool makesSense(const Math::SensorFieldOfView2D& fieldOfView) {
  return fieldOfView.rayCount >= 1 && fieldOfView.rayCount <= kMostRaysOfAScan &&
         fieldOfView.angularRange >= 0.0f && fieldOfView.maxRange >= 0.0f &&
         fieldOfView.minRange <= fieldOfView.maxRange;
}

ScanCaster::ScanCaster(const OccupancyMap& map, float maxRange, float occupiedAbove, ScanPath path)
    : map(map), occupiedAbove(occupiedAbove), steps(findScanSteps(path)), fan{} {
  if (steps.castRays != nullptr) fan.store = MapInside::findStore(map, occupiedAbove);
  fan.width = map.getWidth();
  fan.height = map.getHeight();
  fan.reach = maxRange / static_cast<double>(map.getResolution());
  if (fan.store == nullptr) steps.castRays = nullptr;
}

void ScanCaster::fetch(const Math::Pose2D& pose) const {
  FanCast there = fan;
  there.start = MapInside::frameOf(map).toGrid(Math::position2DFromPose2D(pose));
  if (steps.castRays != nullptr && there.startsInside()) xFetch(there.start);
}

bool ScanCaster::moveTo(const Math::Pose2D& pose) {
  if (!isFinite(pose)) return false;
  fan.start = MapInside::frameOf(map).toGrid(Math::position2DFromPose2D(pose));
  castTogether = fan.startsInside() ? steps.castRays : nullptr;
  if (castTogether != nullptr && xIsFreeAround()) return false;
  const double heading = pose.theta - map.getOrigin().theta;
  fan.cosHeading = std::cos(heading);
  fan.sinHeading = std::sin(heading);
  if (castTogether != nullptr) xFetch(fan.start);
  return true;
}

void ScanCaster::cast(const double* cosines, const double* sines, int count, double* ways) const {
  if (castTogether != nullptr && !castTogether(fan, cosines, sines, count, ways)) return;
  for (int i = 0; i < count; ++i) {
    if (castTogether == nullptr || std::isnan(ways[i])) ways[i] = xCastOne(cosines[i], sines[i]);
  }
}

bool ScanCaster::xIsFreeAround() const {
  // The margin is one cell for the start's place in its cell, and one for rounding.
  constexpr int kMargin = 2;
  return fan.reach < StripImage::kFarthestAround - kMargin &&
         fan.store->isFreeAround(static_cast<int>(fan.start.x), static_cast<int>(fan.start.y),
                                 static_cast<int>(fan.reach) + kMargin);
}

void ScanCaster::xFetch(const GridPoint& start) const {
  fan.store->fetch(static_cast<int>(start.x), static_cast<int>(start.y));
}

double ScanCaster::xCastOne(double cosine, double sine) const {
  const GridRay ray =
      aimRay(fan.width, fan.height, fan.start, cosine * fan.cosHeading - sine * fan.sinHeading,
             sine * fan.cosHeading + cosine * fan.sinHeading, fan.reach);
  return walkPlainly(map, ray, occupiedAbove);
}

}  // namespace QV::detail
