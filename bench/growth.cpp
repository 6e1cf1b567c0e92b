/**
 * The growth of the cost of what the library computes itself, on the project's own map: scans with
 * the number of rays, their range and the size of the map (the apartment, side by side with
 * itself), labelling with the size of the frame. Run from the project's root.
 */
#include <algorithm>
#include <cstdint>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/free_poses.h"
#include "platform/navigation/occ_map_simulate_scan.h"
#include "platform/vision/internal/connected_component_labeling.h"
#include "robot/maps/map_files.h"

namespace QV::bench {
namespace {

constexpr float kOccupiedAbove = 0.4f;
constexpr float kFullTurn = 6.2831855f;
constexpr int kPoses = 256;

const OccupancyMap& apartment() {
  static const OccupancyMap map = robot::loadMap("maps/apartment.yaml");
  return map;
}

OccupancyMap tileApartment(int side) {
  const OccupancyMap& tile = apartment();
  OccupancyMap map(side, side, tile.getResolution(), Math::Pose2D());
  for (int row = 0; row < side; ++row) {
    for (int column = 0; column < side; ++column) {
      map.setOccupancy(column, row,
                       tile.getOccupancy(column % tile.getWidth(), row % tile.getHeight()));
    }
  }
  return map;
}

/** A scan from every pose an iteration; the counter tells what a ray costs. */
void timeScans(benchmark::State& state, const OccupancyMap& map,
               const Math::SensorFieldOfView2D& fieldOfView) {
  const std::vector<Math::Pose2D> poses = drawFreePoses(map, kPoses);
  std::vector<RangeReading> readings;
  const auto scanAll = [&] {
    for (const Math::Pose2D& pose : poses) {
      occMapSimulateScan(map, fieldOfView, pose, readings, kOccupiedAbove);
      benchmark::DoNotOptimize(readings.data());
    }
  };
  scanAll();
  for (auto _ : state) scanAll();
  using benchmark::Counter;
  state.counters["s_per_ray"] = Counter(static_cast<double>(kPoses) * fieldOfView.rayCount,
                                        Counter::kIsIterationInvariantRate | Counter::kInvert);
}

void scanByRays(benchmark::State& state) {
  timeScans(state, apartment(), {0.0f, 8.0f, kFullTurn, static_cast<int>(state.range(0))});
}
BENCHMARK(scanByRays)->RangeMultiplier(4)->Range(1, 4096)->Unit(benchmark::kMicrosecond);

void scanByRange(benchmark::State& state) {
  static const OccupancyMap open(2048, 2048, 0.05f, Math::Pose2D(), 0.0f);
  timeScans(state, open, {0.0f, static_cast<float>(state.range(0)), kFullTurn, 300});
}
BENCHMARK(scanByRange)->RangeMultiplier(2)->Range(1, 64)->Unit(benchmark::kMicrosecond);

void scanByMap(benchmark::State& state) {
  const OccupancyMap map = tileApartment(static_cast<int>(state.range(0)));
  timeScans(state, map, {0.0f, 8.0f, kFullTurn, 300});
}
BENCHMARK(scanByMap)->RangeMultiplier(2)->Range(256, 4096)->Unit(benchmark::kMicrosecond);

/** A floor, a wall and boxes that stand before it. */
cv::Mat_<std::uint16_t> drawScene(int width) {
  cv::Mat_<std::uint16_t> depth(width * 3 / 4, width);
  for (int row = 0; row < depth.rows; ++row) {
    for (int column = 0; column < width; ++column) {
      const double height = static_cast<double>(row) / depth.rows;
      const bool isBox = height > 0.4 && height < 0.7 && (10 * column / width) % 2 == 0;
      const double wall = isBox ? 1500.0 + 100.0 * (10 * column / width) : 3500.0;
      const double floor = height > 0.5 ? 1000.0 / (height - 0.49) : wall;
      depth(row, column) = static_cast<std::uint16_t>(std::min(wall, floor));
    }
  }
  return depth;
}

void labelByFrame(benchmark::State& state) {
  const cv::Mat_<std::uint16_t> depth = drawScene(static_cast<int>(state.range(0)));
  cv::Mat_<int> labels;
  for (auto _ : state) {
    vision::connectedComponentLabeling(depth, labels, 50, 0, 0);
    benchmark::DoNotOptimize(labels.data);
  }
  using benchmark::Counter;
  state.counters["s_per_pixel"] = Counter(static_cast<double>(depth.total()),
                                          Counter::kIsIterationInvariantRate | Counter::kInvert);
}
BENCHMARK(labelByFrame)
    ->Arg(80)
    ->Arg(160)
    ->Arg(320)
    ->Arg(640)
    ->Arg(1280)
    ->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace QV::bench

BENCHMARK_MAIN();
