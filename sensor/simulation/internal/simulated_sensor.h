#pragma once

#include <atomic>
#include <string>
#include <vector>

#include "platform/api.h"
#include "platform/math/pose2d.h"
#include "platform/math/position.h"
#include "platform/navigation/occ_map_simulate_scan.h"
#include "platform/navigation/occupancy_map.h"
#include "sensor/core/sensor.h"
#include "sensor/simulation/internal/shared_pose_pair.h"

namespace QV::sensor {

/**
 * A sensor that casts rays into an occupancy map. It reports either its nearest echo, as one point
 * straight ahead at the echo's range, or all rays, one point each, misses at the maximum range. Its
 * hardware never fails. Without a map its records have no points.
 */
class QV_API SimulatedSensor : public Sensor {
 public:
  /** `sensorPose` places the sensor in the ground frame; it does not turn the fan of rays. */
  SimulatedSensor(const std::string& name, const std::string& familyName,
                  const Math::SensorFieldOfView2D& fieldOfView, const Math::Pose2D& sensorPose,
                  bool useAllRays = false);

  /** The map must outlive its use here. */
  void setOccMap(QV::OccupancyMap* map);

  /**
   * `scanPose`: where the rays start, in the map's frame. `referencePose`: the robot's pose in
   * records. Waits for no reader; a read in another thread sees the pair before or after.
   */
  void setPose2D(const Math::Pose2D& scanPose, const Math::Pose2D& referencePose);

  /** True if it reports all rays, not its nearest echo. */
  bool reportsAllRays() const { return useAllRays; }

 protected:
  std::vector<Math::MetricalData> xGetData() const override;
  bool xSubscribeToHardware() override { return true; }
  bool xUnsubscribeFromHardware() override { return true; }

 private:
  void xAddNearestEcho(const std::vector<RangeReading>& readings,
                       std::vector<Math::Position3D>& points) const;
  void xFindDirections(const std::vector<RangeReading>& readings) const;
  void xAddAllRays(const std::vector<RangeReading>& readings, const PosePair& poses,
                   std::vector<Math::Position3D>& points) const;

  SharedPosePair poses;
  Math::Pose2D sensorPose;
  std::atomic<QV::OccupancyMap*> occMap{nullptr};
  bool useAllRays;
  /** The directions of all rays, one metre long; filled by the first read. Reads exclude each
   * other. */
  mutable std::vector<Math::Position2D> directions;
};

}  // namespace QV::sensor
