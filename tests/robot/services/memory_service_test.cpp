#include "robot/services/internal/memory_service.h"

#include <atomic>
#include <cmath>
#include <latch>
#include <limits>
#include <thread>

#include "platform/ko/simulated_time.h"
#include "platform/middleware/qv_error.h"
#include "platform/middleware/qv_memory_proxy.h"
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

  /** Registers a module that writes down what it hears. */
  void registerRecorder(const std::string& name) {
    registerListener(
        name, [this](const std::string& key, const QVValue& value, const std::string& message) {
          heard.push_back(QVValue::array(key, value, message));
        });
  }

  float* floatPointer(const std::string& key) { return static_cast<float*>(sut.getDataPtr(key)); }
  int* intPointer(const std::string& key) { return static_cast<int*>(sut.getDataPtr(key)); }

  boost::shared_ptr<QVBroker> broker = test::brokerWithMemory();
  QVMemoryProxy sut{broker};
  Values heard;
};

TEST_F(MemoryServiceTest, keysHoldWhatWasInserted) {
  const Values values{QVValue(),
                      true,
                      -3,
                      0.1f,
                      "text",
                      QVValue::array(1, QVValue::array("a")),
                      QVValue::Bytes{1, 2},
                      std::numeric_limits<std::int32_t>::min()};
  for (const QVValue& value : values) {
    sut.insertData("key", value);
    EXPECT_EQ(sut.getData("key"), value);
  }
  sut.insertData("key", std::nanf(""));
  EXPECT_TRUE(std::isnan(sut.getData("key").toFloat()));
  sut.insertData("key", 0.1);
  EXPECT_EQ(sut.getData("key"), QVValue(0.1f));
}

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

TEST_F(MemoryServiceTest, aKeyChangesItsTypeUntilItIsConnected) {
  sut.insertData("key", 1);
  sut.insertData("key", "text");
  sut.insertData("key", 2);
  sut.insertData("key", 2.5f);
  EXPECT_EQ(*floatPointer("key"), 2.5f);
  EXPECT_EQ(errorOf([&] { sut.insertData("key", 3); }),
            "QVMemory::insertData: key \"key\" is connected: float expected, int given");
  EXPECT_EQ(errorOf([&] { sut.insertData("key", "text"); }),
            "QVMemory::insertData: key \"key\" is connected: float expected, string given");
  EXPECT_EQ(sut.getData("key"), QVValue(2.5f));
}

TEST_F(MemoryServiceTest, errorsNameTheKeyAndTheType) {
  sut.insertData("list", QVValue::array(1));
  sut.insertData("flag", true);
  sut.insertData("int", 5);
  sut.declareEvent("event");
  const std::int64_t tooBig = std::int64_t{1} << 31;
  const std::pair<std::string, std::string> cases[] = {
      {errorOf([&] { sut.getData("none"); }), "QVMemory::getData: no key \"none\""},
      {errorOf([&] { sut.getDataPtr("none"); }), "QVMemory::getDataPtr: no key \"none\""},
      {errorOf([&] { sut.getDataPtr("list"); }),
       "QVMemory::getDataPtr: key \"list\": int or float expected, array found"},
      {errorOf([&] { sut.getDataPtr("flag"); }),
       "QVMemory::getDataPtr: key \"flag\": int or float expected, bool found"},
      {errorOf([&] { sut.getDataPtr("event"); }),
       "QVMemory::getDataPtr: key \"event\": int or float expected, invalid found"},
      {errorOf([&] { sut.insertData("int", tooBig); }),
       "QVMemory::insertData: key \"int\": an int of 32 bits expected, 2147483648 given"},
      {errorOf([&] { sut.raiseEvent("new", -tooBig - 1); }),
       "QVMemory::insertData: key \"new\": an int of 32 bits expected, -2147483649 given"},
      {errorOf([&] { sut.unsubscribeToEvent("event", "Me"); }),
       "QVMemory::unsubscribeToEvent: module \"Me\" has no subscription to \"event\""},
      {errorOf([&] { sut.unsubscribeToMicroEvent("none", "Me"); }),
       "QVMemory::unsubscribeToMicroEvent: module \"Me\" has no subscription to \"none\""},
  };
  for (const auto& [actual, expected] : cases) EXPECT_EQ(actual, expected);
  EXPECT_EQ(sut.getData("int"), QVValue(5));
  EXPECT_THROW(sut.getData("new"), QVError);
}

TEST_F(MemoryServiceTest, anEventHasTheKeyOfItsName) {
  sut.declareEvent("declared");
  sut.subscribeToEvent("subscribed", "Nobody", "onEvent");
  EXPECT_EQ(sut.getData("declared"), QVValue());
  EXPECT_EQ(sut.getData("subscribed"), QVValue());
  sut.raiseEvent("raised", 3);
  sut.declareEvent("raised");
  EXPECT_EQ(sut.getData("raised"), QVValue(3));
}

TEST_F(MemoryServiceTest, subscribersHearEachEventInOrderWithTheirMessage) {
  ko::SimulatedTime time;
  registerRecorder("A");
  sut.subscribeToEvent("e", "A", "onEvent");
  sut.subscribeToMicroEvent("e", "A", "message", "onEvent");
  sut.raiseEvent("e", 1);
  sut.raiseEvent("other", 0);
  sut.insertData("e", 5);
  sut.raiseEvent("e", 2);
  EXPECT_THAT(heard, ElementsAre());
  time.runDue();
  EXPECT_THAT(heard, ElementsAre(QVValue::array("e", 1, "A"), QVValue::array("e", 1, "message"),
                                 QVValue::array("e", 2, "A"), QVValue::array("e", 2, "message")));
}

TEST_F(MemoryServiceTest, subscribingAgainReplacesAndLosesNothing) {
  ko::SimulatedTime time;
  registerRecorder("A");
  sut.subscribeToMicroEvent("e", "A", "first", "onEvent");
  sut.raiseEvent("e", 1);
  sut.subscribeToMicroEvent("e", "A", "second", "onEvent");
  sut.raiseEvent("e", 2);
  time.runDue();
  EXPECT_THAT(heard,
              ElementsAre(QVValue::array("e", 1, "first"), QVValue::array("e", 2, "second")));
}

TEST_F(MemoryServiceTest, unsubscribingDropsWhatWasNotDelivered) {
  ko::SimulatedTime time;
  registerRecorder("A");
  registerRecorder("B");
  sut.subscribeToEvent("e", "A", "onEvent");
  sut.subscribeToEvent("e", "B", "onEvent");
  sut.subscribeToMicroEvent("e", "A", "micro", "onEvent");
  sut.raiseEvent("e", 1);
  sut.unsubscribeToEvent("e", "A");
  time.runDue();
  EXPECT_THAT(heard, ElementsAre(QVValue::array("e", 1, "B"), QVValue::array("e", 1, "micro")));
  EXPECT_THROW(sut.unsubscribeToEvent("e", "A"), QVError);
}

TEST_F(MemoryServiceTest, theReceiverIsLookedForAtEachDelivery) {
  ko::SimulatedTime time;
  test::LogCapture log;
  sut.subscribeToEvent("e", "A", "onEvent");
  for (int i = 0; i < 3; ++i) sut.raiseEvent("e", i);
  time.runDue();
  EXPECT_THAT(log.lines(), ElementsAre("error QVMemory.raiseEvent: Event e to A: "
                                       "A::onEvent: no such module"));
  registerRecorder("A");
  sut.raiseEvent("e", 3);
  time.runDue();
  broker->unregisterModule("A");
  sut.raiseEvent("e", 4);
  time.runDue();
  EXPECT_THAT(heard, ElementsAre(QVValue::array("e", 3, "A")));
  EXPECT_EQ(log.lines().size(), 2u);
}

TEST_F(MemoryServiceTest, aThrowingSubscriberIsLoggedAndTheOthersGetTheirEvents) {
  ko::SimulatedTime time;
  test::LogCapture log;
  registerListener("Standard", [](const QVValue&, const QVValue&, const QVValue&) {
    throw std::runtime_error("broke");
  });
  registerListener("Foreign", [](const QVValue&, const QVValue&, const QVValue&) { throw 42; });
  registerListener("Narrow", [](int, int, int) {});
  registerRecorder("Last");
  for (const char* name : {"Standard", "Foreign", "Narrow", "Last"}) {
    sut.subscribeToEvent("e", name, "onEvent");
  }
  sut.raiseEvent("e", 1);
  sut.raiseEvent("e", 2);
  time.runDue();
  EXPECT_THAT(heard, ElementsAre(QVValue::array("e", 1, "Last"), QVValue::array("e", 2, "Last")));
  const std::string to = "error QVMemory.raiseEvent: Event e to ";
  EXPECT_THAT(log.lines(),
              ElementsAre(to + "Standard: Standard::onEvent: broke",
                          to + "Foreign: not a standard exception",
                          to + "Narrow: Narrow::onEvent: arguments (int, int, int) expected, "
                               "(string, int, string) given"));
}

TEST_F(MemoryServiceTest, aHandlerMayUseTheMemoryAndUnsubscribeItself) {
  ko::SimulatedTime time;
  registerListener("A", [this](const QVValue&, const QVValue& value, const QVValue&) {
    heard.push_back(value);
    sut.raiseEvent("next", value);
    if (value == QVValue(2)) sut.unsubscribeToEvent("e", "A");
  });
  sut.subscribeToEvent("e", "A", "onEvent");
  for (int i = 1; i <= 4; ++i) sut.raiseEvent("e", i);
  time.runDue();
  EXPECT_THAT(heard, ElementsAre(QVValue(1), QVValue(2)));
  EXPECT_EQ(sut.getData("next"), QVValue(2));
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
