// The jitter of a periodic task, and the cost of handing a call to the event loop.

#include <algorithm>
#include <chrono>
#include <cmath>
#include <latch>
#include <thread>
#include <vector>

#include <benchmark/benchmark.h>

#include "platform/ko/internal/event_loop.h"
#include "platform/ko/internal/strand.h"
#include "platform/ko/periodic_task.h"
#include "platform/ko/simulated_time.h"

namespace {

constexpr int kPeriods = 300;
constexpr ko::Duration kPeriod = boost::chrono::milliseconds(10);
constexpr int kCalls = 1000;

using Runs = std::vector<ko::Clock::time_point>;

Runs runTask() {
  Runs runs;
  std::latch done(kPeriods + 1);
  ko::PeriodicTask task;
  task.setPeriod(kPeriod);
  task.compensateCallbackTime(true);
  task.setCallback([&] {
    if (runs.size() > kPeriods) return;
    runs.push_back(ko::Clock::now());
    done.count_down();
  });
  task.start(true);
  done.wait();
  return runs;
}

// The yardstick: a thread of its own that does nothing else.
Runs runSleepingThread() {
  Runs runs;
  std::thread([&runs] {
    auto due = std::chrono::steady_clock::now();
    for (int i = 0; i <= kPeriods; ++i) {
      std::this_thread::sleep_until(due);
      runs.push_back(ko::Clock::now());
      due += std::chrono::nanoseconds(kPeriod.count());
    }
  }).join();
  return runs;
}

double inMicroseconds(ko::Duration duration) {
  return static_cast<double>(duration.count()) / 1000.0;
}

// Returns the error of each period in microseconds, the smallest first.
std::vector<double> jitterOf(const Runs& runs) {
  std::vector<double> result;
  for (std::size_t i = 1; i < runs.size(); ++i) {
    result.push_back(std::abs(inMicroseconds(runs[i] - runs[i - 1] - kPeriod)));
  }
  std::sort(result.begin(), result.end());
  return result;
}

void periodicTaskJitter(benchmark::State& state) {
  for (auto _ : state) {
    const Runs runs = runTask();
    const auto jitter = jitterOf(runs);
    state.counters["median_us"] = jitter[kPeriods / 2];
    state.counters["p99_us"] = jitter[kPeriods * 99 / 100];
    state.counters["max_us"] = jitter.back();
    state.counters["drift_us"] = inMicroseconds(runs.back() - runs.front() - kPeriods * kPeriod);
    state.counters["vs_sleeping_thread"] =
        jitterOf(runSleepingThread())[kPeriods / 2] / jitter[kPeriods / 2];
  }
}
BENCHMARK(periodicTaskJitter)->Iterations(1)->UseRealTime()->Unit(benchmark::kSecond);

template <typename Post>
void postAndAwait(benchmark::State& state, Post post) {
  for (auto _ : state) {
    std::latch done(kCalls);
    for (int i = 0; i < kCalls; ++i) post([&done] { done.count_down(); });
    done.wait();
  }
  state.SetItemsProcessed(state.iterations() * kCalls);
}

void eventLoopPosts(benchmark::State& state) {
  postAndAwait(state, [](auto call) { ko::getEventLoop().post(call); });
}
BENCHMARK(eventLoopPosts)->UseRealTime();

void strandPosts(benchmark::State& state) {
  ko::Strand strand;
  postAndAwait(state, [&strand](auto call) { strand.post(call); });
}
BENCHMARK(strandPosts)->UseRealTime();

void delayedCallsCancelled(benchmark::State& state) {
  for (auto _ : state) {
    auto future = ko::getEventLoop().asyncDelay([] {}, boost::chrono::seconds(2));
    future.cancel();
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(delayedCallsCancelled);

// Ten tasks of 10 ms: how many runs a second of computing time gives.
void simulatedRuns(benchmark::State& state) {
  ko::SimulatedTime time;
  std::int64_t runs = 0;
  ko::PeriodicTask tasks[10];
  for (auto& task : tasks) {
    task.setPeriod(kPeriod);
    task.setCallback([&runs] { ++runs; });
    task.start(true);
  }
  for (auto _ : state) time.advance(boost::chrono::seconds(1));
  state.SetItemsProcessed(runs);
}
BENCHMARK(simulatedRuns);

}  // namespace

BENCHMARK_MAIN();
