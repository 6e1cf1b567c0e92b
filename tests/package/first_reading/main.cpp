#include <iostream>

#include "platform/navigation/occupancy_map.h"
#include "sensor/core/scoped_subscription.h"
#include "sensor/simulation/simulated_sensor_manager.h"

int main() {
  QV::OccupancyMap map(100, 100, 0.1f, QV::Math::Pose2D(), 0.0f);       // 10 m by 10 m, all free
  for (int row = 0; row < 100; ++row) map.setOccupancy(70, row, 1.0f);  // a wall at x = 7 m
  QV::sensor::SimulatedSensorManager manager(1, &map);  // kind 1: bumpers, sonars, depth camera
  const QV::sensor::ScopedSubscription subscription(manager, "my navigation", {"Sonar"});
  const QV::Math::Pose2D pose(6.0f, 5.0f, 0.0f);  // m, m, rad
  manager.setPose2D(pose, pose);
  for (const auto& record : manager.getMetricalData("Sonar")) {
    for (const auto& point : record.points) {
      std::cout << record.sensorName << ": " << point.x << " m\n";
    }
  }
}
