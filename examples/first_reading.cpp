#include <iostream>

#include "robot/maps/map_files.h"
#include "sensor/core/scoped_subscription.h"
#include "sensor/simulation/simulated_sensor_manager.h"
#include "session/shared_files.h"

int main() {
  QV::OccupancyMap map = QV::robot::loadMap(QV::session::findMap("apartment"));
  QV::sensor::SimulatedSensorManager manager(1, &map);  // kind 1: bumpers, sonars, depth camera
  QV::sensor::ScopedSubscription subscription(manager, "my navigation", {"Sonar", "Asus"});
  manager.setPose2D({3.0f, 6.3f, 0.0f}, {3.0f, 6.3f, 0.0f});  // m, m, rad
  for (const auto& record : manager.getMetricalData("Sonar"))
    std::cout << record.sensorName << ": " << record.points.size() << " points\n";
}
