#include <array>
#include <atomic>
#include <random>
#include <thread>

#include <gtest/gtest.h>

#include "platform/middleware/qv_memory_proxy.h"
#include "tests/support/broker_with_memory.h"

namespace QV::robot {
namespace {

constexpr int kThreads = 8;
constexpr int kOperations = 1'000'000 / kThreads;

/** Stays subscribed all the time, and checks that each thread's events come without a gap. */
struct Keeper {
  void onEvent(const QVValue&, const QVValue& value, const QVValue&) {
    const auto thread = static_cast<std::size_t>(value[0].toInt());
    if (value[1].toInt() != ++last[thread]) ++gaps;
    ++heard;
    heard.notify_all();
  }
  void awaitEvents(int count) {
    for (int seen = heard; seen < count; seen = heard) heard.wait(seen);
  }

  /** Waits while more than a few events would be on their way, of which the oldest get lost. */
  void announce() { awaitEvents(++announced - kMostOnTheirWay); }

  static constexpr int kMostOnTheirWay = 500;
  std::atomic<int> announced{0};
  std::array<std::int64_t, kThreads> last{};
  int gaps = 0;
  std::atomic<int> heard{0};
};

/** A thread that does a bit of everything, at random. */
class Stormer {
 public:
  Stormer(const boost::shared_ptr<QVBroker>& broker, Keeper& keeper, int number)
      : memory(broker), keeper(keeper), number(number), random(static_cast<unsigned>(number)) {
    auto visitor = boost::make_shared<QVModule>(name);
    visitor->bindMethod("onEvent", [this](const QVValue&, const QVValue&, const QVValue&) {
      if (!welcome) ++unwanted;
    });
    broker->registerModule(visitor);
  }

  void run() {
    for (int i = 0; i < kOperations; ++i) {
      const auto choice = random() % 6;
      if (choice == 0) memory.insertData(someKey(), number);
      if (choice == 1) mismatches += !memory.getData(someKey()).isInt();
      if (choice == 2) write(static_cast<int*>(memory.getDataPtr(someKey())));
      if (choice == 3) memory.insertData(name + std::to_string(i), i);
      if (choice == 4) raise();
      if (choice == 5) turn();
    }
    if (welcome) turn();
  }

  int raised = 0;
  int mismatches = 0;
  std::atomic<int> unwanted{0};

 private:
  std::string someKey() { return "shared" + std::to_string(random() % 16); }

  void raise() {
    keeper.announce();
    memory.raiseEvent("storm", QVValue::array(number, ++raised));
  }

  void write(int* pointer) {
    std::atomic_ref<int>(*pointer).store(number, std::memory_order_relaxed);
  }

  // Subscribes, or unsubscribes: then no event may come any more.
  void turn() {
    if (welcome) {
      memory.unsubscribeToMicroEvent("storm", name);
      welcome = false;
    } else {
      welcome = true;
      memory.subscribeToMicroEvent("storm", name, "", "onEvent");
    }
  }

  QVMemoryProxy memory;
  Keeper& keeper;
  const int number;
  const std::string name = "Visitor" + std::to_string(number);
  std::mt19937 random;
  std::atomic<bool> welcome{false};
};

TEST(MemoryStorm, deliversEveryEventToASubscriberThatStays) {
  const auto broker = test::brokerWithMemory();
  Keeper keeper;
  auto module = boost::make_shared<QVModule>("Keeper");
  module->bindMethod("onEvent", &Keeper::onEvent, &keeper);
  broker->registerModule(module);
  const QVMemoryProxy memory(broker);
  memory.subscribeToEvent("storm", "Keeper", "onEvent");
  for (int i = 0; i < 16; ++i) memory.insertData("shared" + std::to_string(i), 0);

  std::vector<std::unique_ptr<Stormer>> stormers;
  for (int i = 0; i < kThreads; ++i)
    stormers.push_back(std::make_unique<Stormer>(broker, keeper, i));
  std::vector<std::thread> threads;
  for (auto& stormer : stormers) threads.emplace_back([&stormer] { stormer->run(); });
  for (auto& thread : threads) thread.join();

  int raised = 0;
  for (const auto& stormer : stormers) {
    raised += stormer->raised;
    EXPECT_EQ(stormer->mismatches, 0);
    EXPECT_EQ(stormer->unwanted, 0);
  }
  keeper.awaitEvents(raised);
  memory.unsubscribeToEvent("storm", "Keeper");
  EXPECT_EQ(keeper.heard, raised);
  EXPECT_EQ(keeper.gaps, 0);
}

}  // namespace
}  // namespace QV::robot
