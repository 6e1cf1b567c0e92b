#include "robot/services/internal/memory_service.h"

#include <atomic>
#include <latch>
#include <thread>

#include "platform/middleware/qv_error.h"
#include "platform/middleware/qv_memory_proxy.h"
#include "robot/services/internal/input_listener.h"
#include "tests/support/broker_with_memory.h"
#include "tests/support/log_capture.h"
#include "tests/support/vocabulary.h"

namespace QV::robot {
namespace {

using Values = std::vector<QVValue>;

struct MemoryServiceTest : testing::Test {
  /** Registers a module with the method "onEvent". */
  template <typename F>
  void registerListener(const std::string& name, F onEvent) {
    auto module = boost::make_shared<QVModule>(name);
    module->bindMethod("onEvent", onEvent);
    broker->registerModule(module);
  }

  float* floatPointer(const std::string& key) { return static_cast<float*>(sut.getDataPtr(key)); }
  int* intPointer(const std::string& key) { return static_cast<int*>(sut.getDataPtr(key)); }

  boost::shared_ptr<QVBroker> broker = test::brokerWithMemory();
  QVMemoryProxy sut{broker};
  Values heard;
};

TEST_F(MemoryServiceTest, pointersStayValidWhileKeysAreInserted) {
  sut.insertData("float", 1.5f);
  sut.insertData("int", 7);
  float* const asFloat = floatPointer("float");
  int* const asInt = intPointer("int");
  for (int i = 0; i < 10'000; ++i) sut.insertData("other" + std::to_string(i), i);
  EXPECT_EQ(floatPointer("float"), asFloat);
  sut.insertData("float", -2.5f);
  sut.insertData("int", -8);
  EXPECT_EQ(*asFloat, -2.5f);
  EXPECT_EQ(*asInt, -8);
  *asFloat = 4.0f;
  *asInt = 9;
  EXPECT_EQ(sut.getData("float"), QVValue(4.0f));
  EXPECT_EQ(sut.getData("int"), QVValue(9));
}

struct WrittenInputs : InputListener {
  void onWrite(const std::string& key, const QVValue& value, bool raised) override {
    texts.push_back(key + " " + value.toText() + (raised ? " raised" : ""));
  }
  void onImage(int, const QVValue&) override {}
  void onStep(const BodyStep&) override {}

  std::vector<std::string> texts;
};

TEST_F(MemoryServiceTest, aListenerGetsWhatIsThereAndThenWhatIsWritten) {
  WrittenInputs inputs;
  MemoryService service(broker);
  service.insertData("old", 1);
  service.setListener(&inputs);
  service.insertData("new", 2);
  service.raiseEvent("event", 3);
  service.setListener(nullptr);
  service.insertData("new", 4);
  EXPECT_THAT(inputs.texts, ElementsAre("old 1", "new 2", "event 3 raised"));
}

TEST_F(MemoryServiceTest, unsubscribingWaitsForTheDeliveryInProgress) {
  std::latch entered(1);
  std::latch unsubscribing(1);
  std::atomic<bool> left{false};
  registerListener("A", [&](const QVValue&, const QVValue&, const QVValue&) {
    entered.count_down();
    unsubscribing.wait();
    for (int i = 0; i < 1000; ++i) std::this_thread::yield();
    left = true;
  });
  sut.subscribeToEvent("e", "A", "onEvent");
  sut.raiseEvent("e", 1);
  entered.wait();
  unsubscribing.count_down();
  sut.unsubscribeToEvent("e", "A");
  EXPECT_TRUE(left);
}

TEST_F(MemoryServiceTest, theOldestEventsForAHangingSubscriberAreDroppedAndCounted) {
  test::LogCapture log;
  std::latch entered(1);
  std::latch goingOn(1);
  std::latch last(1);
  registerListener("Hanging", [&](const QVValue&, const QVValue& value, const QVValue&) {
    entered.count_down(entered.try_wait() ? 0 : 1);
    goingOn.wait();
    heard.push_back(value);
    if (value.toInt() == 1003) last.count_down();
  });
  sut.subscribeToEvent("e", "Hanging", "onEvent");
  sut.raiseEvent("e", 0);
  entered.wait();
  for (int i = 1; i <= 1003; ++i) sut.raiseEvent("e", i);
  const std::string line = "error QVMemory.raiseEvent: Event e to Hanging.onEvent: ";
  const std::string dropping = line + "1000 wait, the oldest are dropped until it goes on";
  EXPECT_THAT(log.lines(), ElementsAre(dropping));
  goingOn.count_down();
  last.wait();
  sut.unsubscribeToEvent("e", "Hanging");
  EXPECT_THAT(log.lines(), ElementsAre(dropping, line + "goes on, 3 were dropped"));
  ASSERT_EQ(heard.size(), 1001u);
  EXPECT_EQ(heard[0], QVValue(0));
  EXPECT_EQ(heard[1], QVValue(4));
}

TEST_F(MemoryServiceTest, theServiceMayBeDestroyedDuringADelivery) {
  std::latch entered(1);
  std::latch leaving(1);
  std::atomic<bool> left{false};
  registerListener("A", [&](const QVValue&, const QVValue&, const QVValue&) {
    entered.count_down();
    leaving.wait();
    EXPECT_THROW(sut.getData("e"), QVError);
    left = true;
  });
  sut.subscribeToEvent("e", "A", "onEvent");
  sut.raiseEvent("e", 1);
  sut.raiseEvent("e", 2);
  entered.wait();
  std::thread helper([&] {
    while (broker->isModulePresent("QVMemory")) std::this_thread::yield();
    leaving.count_down();
  });
  broker->unregisterModule("QVMemory");
  EXPECT_TRUE(left);
  helper.join();
}

}  // namespace
}  // namespace QV::robot
