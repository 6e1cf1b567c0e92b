// Whole readings of a simulated robot of kind 1, all families subscribed, anywhere in the project's
// map. Run from the project's root.

#include <cstddef>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/free_poses.h"
#include "robot/maps/map_files.h"
#include "sensor/core/scoped_subscription.h"
#include "sensor/simulation/simulated_sensor_manager.h"

namespace {

constexpr std::size_t kPoses = 256;

void readKind1(benchmark::State& state) {
  QV::OccupancyMap map = QV::robot::loadMap("maps/apartment.yaml");
  QV::sensor::SimulatedSensorManager manager(1, &map);
  const QV::sensor::ScopedSubscription subscription(manager, "bench");
  const std::vector<QV::Math::Pose2D> poses = QV::bench::drawFreePoses(map, kPoses);
  std::size_t count = 0;
  for (auto _ : state) {
    const QV::Math::Pose2D& pose = poses[++count % poses.size()];
    manager.setPose2D(pose, pose);
    benchmark::DoNotOptimize(manager.getMetricalData());
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(readKind1)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
