/**
 * What this machine needs for the least that a row of the other benchmarks can do: to copy or write
 * as many bytes, to cast rays that meet nothing, to take a lock, to hand a call to another thread.
 * The rows are named by what they do.
 */
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <cstring>
#include <functional>
#include <latch>
#include <mutex>
#include <queue>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/timing.h"
#include "platform/math/metrical_data.h"
#include "platform/math/transform.h"
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

void allocateAndFree(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(std::vector<char>(64));
}

/** Frees 50 records of 300 points, as whoever replaces them must. */
void freeRecords(benchmark::State& state) {
  Math::MetricalData record;
  record.sensorName = "Sensor/Number50";
  record.familyName = "Laser";
  record.points.resize(300);
  std::vector<double> times;
  for (auto _ : state) {
    std::vector<Math::MetricalData> records(50, record);
    const auto start = std::chrono::steady_clock::now();
    records = {};
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
    times.push_back(passed.count());
    state.SetIterationTime(times.back());
  }
  state.counters["median_us"] = 1e6 * medianOf(times);
}

/** Runs calls in order, on a thread of its own that sleeps while there are none. */
class Courier {
 public:
  ~Courier() {
    pass({});
    thread.join();
  }

  /** An empty call is the last. */
  void pass(std::function<void()> call) {
    const std::lock_guard<std::mutex> lock(mutex);
    calls.push(std::move(call));
    hasCalls.notify_one();
  }

 private:
  void xRun() {
    while (const auto call = xTake()) call();
  }

  std::function<void()> xTake() {
    std::unique_lock<std::mutex> lock(mutex);
    hasCalls.wait(lock, [this] { return !calls.empty(); });
    auto call = std::move(calls.front());
    calls.pop();
    return call;
  }

  std::mutex mutex;
  std::condition_variable hasCalls;
  std::queue<std::function<void()>> calls;
  std::thread thread{[this] { xRun(); }};
};

void passToThread(benchmark::State& state) {
  constexpr int kCalls = 1000;
  Courier courier;
  for (auto _ : state) {
    std::latch done(kCalls);
    for (int i = 0; i < kCalls; ++i) courier.pass([&done] { done.count_down(); });
    done.wait();
  }
  state.SetItemsProcessed(state.iterations() * kCalls);
}

/** Takes the earliest of ten due times and puts it back for later, with a call between. */
void runEarliest(benchmark::State& state) {
  using Due = std::pair<std::int64_t, std::function<void()>*>;
  std::int64_t runs = 0;
  std::function<void()> call = [&runs] { ++runs; };
  std::priority_queue<Due, std::vector<Due>, std::greater<>> queue;
  for (int i = 0; i < 10; ++i) queue.emplace(i, &call);
  for (auto _ : state) {
    const auto [time, due] = queue.top();
    queue.pop();
    (*due)();
    queue.emplace(time + 10, due);
  }
  benchmark::DoNotOptimize(runs);
}

/** Places 25 frames, each in the one before. */
void multiplyTransforms(benchmark::State& state) {
  const auto step = Math::transformFromPose2D({0.1f, 0.0f, 0.2f});
  for (auto _ : state) {
    Math::Transform place;
    for (int i = 0; i < 25; ++i) place = place * step;
    benchmark::DoNotOptimize(place);
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
BENCHMARK(allocateAndFree);
BENCHMARK(freeRecords)->UseManualTime();
BENCHMARK(passToThread)->UseRealTime();
BENCHMARK(runEarliest);
BENCHMARK(multiplyTransforms);

}  // namespace
}  // namespace QV::bench

BENCHMARK_MAIN();
