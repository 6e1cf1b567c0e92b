// The shared memory: fast access against a plain loop and against proxy calls, a proxy call against
// a virtual one, and the delivery of events.

#include <atomic>
#include <chrono>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/timing.h"
#include "platform/middleware/qv_broker.h"
#include "platform/middleware/qv_memory_proxy.h"
#include "robot/services/internal/memory_service.h"
#include "sensor/real/qv_memory_fast_access.h"

namespace QV {
namespace {

constexpr int kKeys = 64;

template <typename F>
double secondsOf(int calls, F run) {
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < calls; ++i) run();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() / calls;
}

/**
 * A peer's time divided by ours: both take turns, so that they meet the same machine, and the
 * median of the turns counts.
 */
template <typename Peer, typename Own>
double ratioOf(int peerCalls, Peer peer, int ownCalls, Own own) {
  std::vector<double> ratios;
  for (int turn = 0; turn < 101; ++turn) {
    ratios.push_back(secondsOf(peerCalls, peer) / secondsOf(ownCalls, own));
  }
  return bench::medianOf(std::move(ratios));
}

boost::shared_ptr<QVBroker> brokerWithMemory() {
  auto broker = QVBroker::create();
  broker->registerModule(boost::make_shared<robot::MemoryService>(broker));
  return broker;
}

std::vector<std::string> makeKeys() {
  std::vector<std::string> keys;
  for (int i = 0; i < kKeys; ++i) {
    keys.push_back("Device/SubDeviceList/Laser/Front/" + std::to_string(i) + "/Sensor/Value");
  }
  return keys;
}

struct KeysFixture {
  KeysFixture() {
    access.ConnectToVariables(broker, keys, true);
    for (const auto& key : keys) pointers.push_back(static_cast<float*>(memory.getDataPtr(key)));
  }

  void readAccess() {
    access.GetValues(values);
    benchmark::DoNotOptimize(values.data());
    benchmark::ClobberMemory();
  }
  void readPointers() {
    for (std::size_t i = 0; i < pointers.size(); ++i) values[i] = *pointers[i];
    benchmark::DoNotOptimize(values.data());
    benchmark::ClobberMemory();
  }
  void readProxy() {
    for (std::size_t i = 0; i < keys.size(); ++i) values[i] = memory.getData(keys[i]).toFloat();
    benchmark::DoNotOptimize(values.data());
    benchmark::ClobberMemory();
  }

  boost::shared_ptr<QVBroker> broker = brokerWithMemory();
  QVMemoryProxy memory{broker};
  std::vector<std::string> keys = makeKeys();
  QVMemoryFastAccess access;
  std::vector<float*> pointers;
  std::vector<float> values = std::vector<float>(kKeys);
};

void getValues64(benchmark::State& state) {
  KeysFixture fixture;
  for (auto _ : state) fixture.readAccess();
  const auto own = [&] { fixture.readAccess(); };
  state.counters["vs_pointer_loop"] = ratioOf(
      1000, [&] { fixture.readPointers(); }, 1000, own);
  state.counters["vs_proxy"] = ratioOf(
      10, [&] { fixture.readProxy(); }, 1000, own);
}
BENCHMARK(getValues64);

void getDataOneKey(benchmark::State& state) {
  KeysFixture fixture;
  for (auto _ : state) benchmark::DoNotOptimize(fixture.memory.getData(fixture.keys[0]));
}
BENCHMARK(getDataOneKey);

class Counter {
 public:
  virtual ~Counter() = default;
  virtual int add(int amount) = 0;
};

class RealCounter : public Counter {
 public:
  int add(int amount) override { return count += amount; }
  int count = 0;
};

void callByName(benchmark::State& state) {
  auto broker = QVBroker::create();
  RealCounter counter;
  auto module = boost::make_shared<QVModule>("Counter");
  module->bindMethod("add", &RealCounter::add, &counter);
  broker->registerModule(module);
  const QVProxy proxy(broker, "Counter");
  const std::string method = "add";
  const auto byName = [&] { benchmark::DoNotOptimize(proxy.call<int>(method, 1)); };
  Counter* direct = &counter;
  const auto byPointer = [&] {
    // The pointer is hidden: else the compiler would know the class and not call at all.
    benchmark::DoNotOptimize(direct);
    benchmark::DoNotOptimize(direct->add(1));
  };
  for (auto _ : state) byName();
  state.counters["vs_virtual_call"] = ratioOf(10'000, byPointer, 1000, byName);
}
BENCHMARK(callByName);

void deliverEvents(benchmark::State& state) {
  auto broker = brokerWithMemory();
  std::atomic<int> heard{0};
  auto module = boost::make_shared<QVModule>("Listener");
  module->bindMethod("onEvent", [&heard](const std::string&, const QVValue&, const std::string&) {
    ++heard;
    heard.notify_one();
  });
  broker->registerModule(module);
  const QVMemoryProxy memory(broker);
  memory.subscribeToEvent("Bench/Event", "Listener", "onEvent");
  constexpr int kBatch = 1000;
  int raised = 0;
  for (auto _ : state) {
    for (int i = 0; i < kBatch; ++i) memory.raiseEvent("Bench/Event", ++raised);
    for (int seen = heard; seen < raised; seen = heard) heard.wait(seen);
  }
  state.SetItemsProcessed(raised);
}
BENCHMARK(deliverEvents)->UseRealTime()->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace QV

BENCHMARK_MAIN();
