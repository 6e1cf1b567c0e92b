// A reader's cost for the records of a whole robot, against a plain copy of the same vector.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

#include "sensor/core/sensor_manager.h"

namespace {

using QV::Math::MetricalData;
using Records = std::vector<MetricalData>;

Records recordsOf(int count, int points) {
  Records records(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) {
    records[static_cast<std::size_t>(i)].sensorName = "Sensor/Number" + std::to_string(i);
    records[static_cast<std::size_t>(i)].familyName = "Laser";
    records[static_cast<std::size_t>(i)].points.resize(static_cast<std::size_t>(points));
  }
  return records;
}

/** A manager whose cache is filled once. */
class CachedManager : public QV::sensor::SensorManager {
 public:
  explicit CachedManager(const Records& records) { xSetData(records); }
  using SensorManager::xSetData;
  void setSensorsDebug(bool) override {}

 protected:
  Records xGetData() const override { return xCopyData(); }
  void xOnSensorOnChanged(bool) override {}
};

template <typename Call>
double secondsOf(const Call& call) {
  const auto start = std::chrono::steady_clock::now();
  benchmark::DoNotOptimize(call());
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Both by turns, so that whatever else the machine does falls on both alike.
void getMetricalData(benchmark::State& state) {
  static const Records records = recordsOf(50, 300);
  static const CachedManager manager(records);
  double ours = 0.0;
  double copy = 0.0;
  for (auto _ : state) {
    copy += secondsOf([] { return Records(records); });
    const double seconds = secondsOf([] { return manager.getMetricalData(); });
    ours += seconds;
    state.SetIterationTime(seconds);
  }
  state.counters["vs_copy"] = benchmark::Counter(copy / ours, benchmark::Counter::kAvgThreads);
}
BENCHMARK(getMetricalData)->DenseThreadRange(1, 4)->UseManualTime()->Unit(benchmark::kMicrosecond);

// The time that the refresh waits for readers that do nothing but read.
void replaceWhileRead(benchmark::State& state) {
  const Records records = recordsOf(50, 300);
  CachedManager manager(records);
  std::atomic<bool> stop{false};
  std::vector<std::thread> readers;
  for (int i = 0; i < state.range(0); ++i) {
    readers.emplace_back([&] {
      while (!stop) benchmark::DoNotOptimize(manager.getMetricalData());
    });
  }
  std::vector<double> waits;
  for (auto _ : state) {
    Records fresh = records;
    waits.push_back(secondsOf([&] { return manager.xSetData(std::move(fresh)), 0; }));
    state.SetIterationTime(waits.back());
  }
  stop = true;
  for (auto& reader : readers) reader.join();
  std::sort(waits.begin(), waits.end());
  state.counters["median_us"] = 1e6 * waits[waits.size() / 2];
  state.counters["p99_us"] = 1e6 * waits[waits.size() * 99 / 100];
}
BENCHMARK(replaceWhileRead)
    ->Arg(0)
    ->Arg(4)
    ->UseManualTime()
    ->Iterations(3000)
    ->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
