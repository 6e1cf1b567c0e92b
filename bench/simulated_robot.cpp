// Whole readings of a simulated robot of kind 1, all families subscribed. Run from the project's
// root.

#include <benchmark/benchmark.h>

#include "robot/world/map_files.h"
#include "sensor/core/scoped_subscription.h"
#include "sensor/simulation/simulated_sensor_manager.h"

namespace {

void readKind1(benchmark::State& state) {
  QV::OccupancyMap map = QV::robot::loadMap("maps/apartment.yaml");
  QV::sensor::SimulatedSensorManager manager(1, &map);
  const QV::sensor::ScopedSubscription subscription(manager, "bench");
  float heading = 0.0f;
  for (auto _ : state) {
    heading += 0.1f;
    const QV::Math::Pose2D pose(9.0f, 6.3f, heading);
    manager.setPose2D(pose, pose);
    benchmark::DoNotOptimize(manager.getMetricalData());
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(readKind1)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
