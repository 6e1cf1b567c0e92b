/**
 * A fleet of simulated robots of kind 1 on one map: what each takes from the heap, the map left
 * out, and how many whole readings a second one or several threads make. Run from the project's
 * root.
 */
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <malloc.h>
#include <memory>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/free_poses.h"
#include "robot/maps/map_files.h"
#include "sensor/simulation/simulated_sensor_manager.h"

namespace {

/** The bytes that this thread holds of the heap, as the heap counts them. */
thread_local std::int64_t heldBytes = 0;

}  // namespace

namespace {

void* countedAs(void* memory) {
  if (memory == nullptr) throw std::bad_alloc();
  heldBytes += static_cast<std::int64_t>(malloc_usable_size(memory));
  return memory;
}

}  // namespace

// The operator is not inlined: else the compiler takes the new and the free for a mismatch.
[[gnu::noinline]] void* operator new(std::size_t size) {
  return countedAs(std::malloc(size));
}
[[gnu::noinline]] void* operator new(std::size_t size, std::align_val_t alignment) {
  const auto multiple = static_cast<std::size_t>(alignment);
  return countedAs(std::aligned_alloc(multiple, (size + multiple - 1) / multiple * multiple));
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
  heldBytes -= static_cast<std::int64_t>(malloc_usable_size(memory));
  std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
  operator delete(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::align_val_t) noexcept {
  operator delete(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
  operator delete(memory);
}

namespace QV::bench {
namespace {

constexpr int kRobots = 1000;

/** Robots that have all been read once. */
class Fleet {
 public:
  Fleet() : map(robot::loadMap("maps/apartment.yaml")), poses(drawFreePoses(map, kRobots)) {
    robots.reserve(kRobots);
    add();
    const std::int64_t before = heldBytes;
    while (robots.size() < kRobots) add();
    bytesPerRobot = static_cast<double>(heldBytes - before) / (kRobots - 1);
  }

  void read(std::size_t robot) {
    robots[robot]->setPose2D(poses[robot], poses[robot]);
    benchmark::DoNotOptimize(robots[robot]->getMetricalData());
  }

  double getBytesPerRobot() const { return bytesPerRobot; }

 private:
  void add() {
    robots.push_back(std::make_unique<sensor::SimulatedSensorManager>(1, &map));
    robots.back()->subscribe("bench");
    read(robots.size() - 1);
  }

  OccupancyMap map;
  std::vector<Math::Pose2D> poses;
  std::vector<std::unique_ptr<sensor::SimulatedSensorManager>> robots;
  double bytesPerRobot;
};

/** Each thread reads robots of its own. */
void readFleet(benchmark::State& state) {
  static Fleet fleet;
  const auto first = static_cast<std::size_t>(state.thread_index());
  std::size_t robot = first;
  for (auto _ : state) {
    fleet.read(robot);
    robot += static_cast<std::size_t>(state.threads());
    if (robot >= kRobots) robot = first;
  }
  state.SetItemsProcessed(state.iterations());
  state.counters["bytes_per_robot"] =
      benchmark::Counter(fleet.getBytesPerRobot(), benchmark::Counter::kAvgThreads);
}
const auto kCores = static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
BENCHMARK(readFleet)->ThreadRange(1, kCores)->UseRealTime()->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace QV::bench

BENCHMARK_MAIN();
