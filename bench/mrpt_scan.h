#pragma once

#ifdef QV_BENCH_MRPT

#include <mrpt/maps/COccupancyGridMap2D.h>
#include <mrpt/obs/CObservation2DRangeScan.h>

#include <benchmark/benchmark.h>

#include "platform/math/sensor_field_of_view_2d.h"
#include "platform/navigation/occupancy_map.h"

namespace QV::bench {

/** A map as MRPT has it, and its scan. */
class Mrpt {
 public:
  explicit Mrpt(const OccupancyMap& map) {
    const Math::Pose2D& origin = map.getOrigin();
    const float resolution = map.getResolution();
    grid.setSize(origin.x, origin.x + static_cast<float>(map.getWidth()) * resolution, origin.y,
                 origin.y + static_cast<float>(map.getHeight()) * resolution, resolution);
    for (int row = 0; row < map.getHeight(); ++row) {
      for (int column = 0; column < map.getWidth(); ++column) {
        grid.setCell(column, row, 1.0f - map.getOccupancy(column, row));
      }
    }
  }

  void scan(const Math::SensorFieldOfView2D& fieldOfView, const Math::Pose2D& pose) {
    observation.aperture = fieldOfView.angularRange;
    observation.maxRange = fieldOfView.maxRange;
    grid.laserScanSimulator(observation, mrpt::poses::CPose2D(pose.x, pose.y, pose.theta),
                            OccupancyMap::kSolidAbove,
                            static_cast<std::size_t>(fieldOfView.rayCount));
    benchmark::DoNotOptimize(observation.getScanRange(0));
  }

 private:
  mrpt::maps::COccupancyGridMap2D grid;
  mrpt::obs::CObservation2DRangeScan observation;
};

}  // namespace QV::bench

#endif
