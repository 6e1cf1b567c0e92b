#include "platform/navigation/occ_map_simulate_scan.h"

#include "platform/navigation/internal/scan_path.h"

namespace QV {

void occMapSimulateScan(const OccupancyMap& map, const Math::SensorFieldOfView2D& fieldOfView,
                        const Math::Pose2D& scanPose, std::vector<RangeReading>& readings,
                        float occupiedAbove) {
  detail::simulateScan(map, fieldOfView, scanPose, readings, occupiedAbove, detail::ScanPath::best);
}

}  // namespace QV
