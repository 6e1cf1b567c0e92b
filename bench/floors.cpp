/**
 * What this machine needs for the least that a row of the other benchmarks can do: to copy or write
 * as many bytes, to cast rays that meet nothing, to take a lock. The rows are named by what they
 * are a floor of.
 */
#include <cstring>
#include <mutex>
#include <vector>

#include <benchmark/benchmark.h>

#include "platform/navigation/occ_map_simulate_scan.h"

namespace QV::bench {
namespace {

void copyBytes(benchmark::State& state) {
  const auto bytes = static_cast<std::size_t>(state.range(0));
  const std::vector<char> from(bytes, 1);
  std::vector<char> to(bytes);
  for (auto _ : state) {
    std::memcpy(to.data(), from.data(), bytes);
    benchmark::DoNotOptimize(to.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

void writeBytes(benchmark::State& state) {
  const auto bytes = static_cast<std::size_t>(state.range(0));
  std::vector<char> to(bytes);
  for (auto _ : state) {
    std::memset(to.data(), 1, bytes);
    benchmark::DoNotOptimize(to.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

/** Rays over 1 rad and 2 m with nothing in sight: what a call and what each ray costs at least. */
void castInTheOpen(benchmark::State& state) {
  const OccupancyMap map(400, 400, 0.05f, {}, 0.0f);
  const Math::SensorFieldOfView2D fieldOfView{0.0f, 2.0f, 1.0f, static_cast<int>(state.range(0))};
  std::vector<RangeReading> readings;
  for (auto _ : state) {
    occMapSimulateScan(map, fieldOfView, {10.013f, 10.017f, 0.4f}, readings, 0.4f);
    benchmark::DoNotOptimize(readings.data());
  }
}

void lockAndUnlock(benchmark::State& state) {
  std::mutex mutex;
  for (auto _ : state) {
    const std::lock_guard<std::mutex> lock(mutex);
    benchmark::ClobberMemory();
  }
}

// A cache's half each, and main memory; 50 records of 300 points, the 68,702 points of a robot's
// refresh, depth images of both sizes, a message.
BENCHMARK(copyBytes)->Arg(16 << 10)->Arg(512 << 10)->Arg(8 << 20)->Arg(256 << 20);
BENCHMARK(copyBytes)->Arg(180000)->Arg(824424)->Arg(153600)->Arg(614400)->Arg(250000);
// The points of a depth image that is full of them, at both sizes.
BENCHMARK(writeBytes)->Arg(12 * 271096)->Arg(12 * 67753);
BENCHMARK(castInTheOpen)->Arg(1)->Arg(20)->Arg(60);
BENCHMARK(lockAndUnlock);

}  // namespace
}  // namespace QV::bench

BENCHMARK_MAIN();
