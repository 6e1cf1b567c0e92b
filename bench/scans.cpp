/**
 * The cost of a ray in scans from many poses at once, on real maps (in the folder that QV_DATA
 * names), beside as many single scans from the same poses, in turn. And how many times as fast two
 * threads are as one, beside two that share nothing, which is all that the machine has.
 */
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/free_poses.h"
#include "bench/timing.h"
#include "platform/navigation/occ_map_simulate_scan.h"
#include "robot/maps/map_files.h"

namespace QV::bench {
namespace {

constexpr float kOccupiedAbove = 0.4f;
constexpr std::size_t kPoses = 2000;

struct MapCase {
  const char* name;
  const char* file;
};
const MapCase kMaps[] = {{"medium", "maps/range_libc/basement_hallways_5cm.yaml"},
                         {"huge", "maps/range_libc/huge_map.yaml"}};

struct FanCase {
  const char* name;
  Math::SensorFieldOfView2D fieldOfView;
};
const FanCase kFans[] = {{"60_rays_full_turn_8m", {0.0f, 8.0f, 6.2831855f, 60}},
                         {"20_rays_1rad_2m", {0.0f, 2.0f, 1.0f, 20}}};

/** Seconds on the wall clock: threads run at once. */
template <typename Run>
double wallSecondsOf(Run run) {
  const auto begin = std::chrono::steady_clock::now();
  run();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

void scanManyPoses(benchmark::State& state, const MapCase& mapCase, const FanCase& fan) {
  const char* const folder = std::getenv("QV_DATA");
  const std::string path = std::string(folder != nullptr ? folder : "") + "/" + mapCase.file;
  if (!std::filesystem::exists(path)) {
    state.SkipWithError((std::string("skipped: no ") + mapCase.file + " in QV_DATA").c_str());
    return;
  }
  const OccupancyMap map = robot::loadMap(path);
  const std::vector<Math::Pose2D> poses = drawFreePoses(map, kPoses);
  std::vector<float> ranges(poses.size() * static_cast<std::size_t>(fan.fieldOfView.rayCount));
  std::vector<float> others(ranges.size());
  std::vector<RangeReading> readings;
  const auto scanTogether = [&](int threads) {
    occMapSimulateScans(map, poses, fan.fieldOfView, ranges, kOccupiedAbove, threads);
    benchmark::DoNotOptimize(ranges.data());
  };
  const auto scanTwice = [&] {
    const std::jthread other([&] {
      occMapSimulateScans(map, poses, fan.fieldOfView, others, kOccupiedAbove, 1);
      benchmark::DoNotOptimize(others.data());
    });
    scanTogether(1);
  };
  const auto scanOneByOne = [&] {
    for (const Math::Pose2D& pose : poses) {
      occMapSimulateScan(map, fan.fieldOfView, pose, readings, kOccupiedAbove);
      benchmark::DoNotOptimize(readings.data());
    }
  };
  scanOneByOne();
  std::vector<double> singles;
  std::vector<double> together;
  std::vector<double> onOneThread;
  std::vector<double> onTwoThreads;
  std::vector<double> apart;
  for (auto _ : state) {
    singles.push_back(secondsOf(scanOneByOne));
    together.push_back(secondsOf([&] { scanTogether(1); }));
    onOneThread.push_back(wallSecondsOf([&] { scanTogether(1); }));
    onTwoThreads.push_back(wallSecondsOf([&] { scanTogether(2); }));
    apart.push_back(wallSecondsOf(scanTwice) / 2);
    state.SetIterationTime(together.back());
  }
  state.counters["ns_per_ray"] = 1e9 * medianOf(together) / static_cast<double>(ranges.size());
  state.counters["vs_single"] = ratioOf(singles, together);
  state.counters["two_threads"] = ratioOf(onOneThread, onTwoThreads);
  state.counters["two_apart"] = ratioOf(onOneThread, apart);
}

bool registerAll() {
  for (const MapCase& mapCase : kMaps) {
    for (const FanCase& fan : kFans) {
      registerTimed(std::string("scans/") + mapCase.name + "/" + fan.name, scanManyPoses, mapCase,
                    fan);
    }
  }
  return true;
}

[[maybe_unused]] const bool isRegistered = registerAll();

}  // namespace
}  // namespace QV::bench

BENCHMARK_MAIN();
