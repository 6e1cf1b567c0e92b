#pragma once

#include "platform/math/pose2d.h"
#include "platform/math/sensor_field_of_view_2d.h"
#include "platform/navigation/internal/fan_cast.h"
#include "platform/navigation/internal/scan_path.h"
#include "platform/navigation/occupancy_map.h"

namespace QV::detail {

/** True if such a scan has any rays; else a field of view makes no sense. */
bool makesSense(const Math::SensorFieldOfView2D& fieldOfView);

/**
 * Casts the rays of scans, some at a time, from one pose after the other. A copy is another
 * thread's.
 */
class ScanCaster {
 public:
  ScanCaster(const OccupancyMap& map, float maxRange, float occupiedAbove, ScanPath path);

  /** Prefetches what rays from a pose look at first. */
  void fetch(const Math::Pose2D& pose) const;

  /** Goes to where the rays start. False when all miss, known without casting any. */
  bool moveTo(const Math::Pose2D& pose);

  /** The ways, in cells, of up to FanCast::kMostRays rays; infinity for those that hit nothing. */
  void cast(const double* cosines, const double* sines, int count, double* ways) const;

  /** The steps that follow. */
  const ScanSteps& getSteps() const { return steps; }

 private:
  bool xIsFreeAround() const;
  void xFetch(const GridPoint& start) const;
  double xCastOne(double cosine, double sine) const;

  const OccupancyMap& map;
  float occupiedAbove;
  ScanSteps steps;
  FanCast fan;
  /** Null without a store, and for a start that it is not for. */
  CastRays* castTogether = nullptr;
};

}  // namespace QV::detail
