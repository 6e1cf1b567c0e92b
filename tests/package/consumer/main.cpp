#include <iomanip>
#include <iostream>

#include "platform/navigation/occupancy_map.h"
#include "sensor/core/scoped_subscription.h"
#include "sensor/simulation/simulated_sensor_manager.h"

int main() {
  QV::OccupancyMap map(100, 100, 0.1f, QV::Math::Pose2D(), 0.0f);
  for (int row = 0; row < 100; ++row) map.setOccupancy(70, row, 1.0f);
  QV::sensor::SimulatedSensorManager manager(0, &map);
  const QV::sensor::ScopedSubscription subscription(manager, "consumer", {"Sonar"});
  const QV::Math::Pose2D pose(6.0f, 5.0f, 0.0f);
  manager.setPose2D(pose, pose);
  for (const auto& record : manager.getMetricalData("Sonar")) {
    std::cout << std::fixed << std::setprecision(2) << record.sensorName << ' '
              << record.points.at(0).x << '\n';
  }
}
