#include "platform/middleware/qv_broker.h"

#include <atomic>
#include <latch>
#include <stdexcept>
#include <thread>

#include "platform/middleware/dcm_proxy.h"
#include "platform/middleware/qv_error.h"
#include "platform/middleware/qv_memory_proxy.h"
#include "platform/middleware/qv_motion_proxy.h"
#include "tests/support/vocabulary.h"

namespace QV {
namespace {

boost::shared_ptr<QVModule> makeModule(const std::string& name) {
  return boost::make_shared<QVModule>(name);
}

/** A broker with the module "Test", whose methods are bound by the test. */
struct QVBrokerTest : testing::Test {
  QVProxy proxy() {
    sut->registerModule(module);
    return QVProxy(sut, "Test");
  }

  boost::shared_ptr<QVModule> module = makeModule("Test");
  boost::shared_ptr<QVBroker> sut = QVBroker::create();
};

struct Counter {
  int add(int amount) { return count += amount; }
  int get() const { return count; }
  int count = 0;
};

int plainFunction(const std::vector<int>& values) {
  return static_cast<int>(values.size());
}

TEST_F(QVBrokerTest, functionsMembersAndLambdasAreCalledByName) {
  Counter counter;
  module->bindMethod("add", &Counter::add, &counter);
  module->bindMethod("get", &Counter::get, &counter);
  module->bindMethod("plain", plainFunction);
  module->bindMethod("join", [](const std::string& a, std::string b, bool twice) {
    return twice ? a + b + b : a + b;
  });
  const QVProxy caller = proxy();
  EXPECT_EQ(caller.call<int>("add", 3), 3);
  EXPECT_EQ(caller.call<float>("add", 2.9f), 5.0f);
  EXPECT_EQ(caller.call<int>("get"), 5);
  EXPECT_EQ(caller.call<int>("plain", std::vector<float>{1, 2}), 2);
  EXPECT_EQ(caller.call<std::string>("join", "a", std::string("b"), true), "abb");
  EXPECT_EQ(caller.call("join", std::vector<QVValue>{"a", "b", false}), QVValue("ab"));
  EXPECT_EQ(caller.call<QVValue>("get"), QVValue(5));
}

TEST_F(QVBrokerTest, aWrongCallNamesModuleMethodExpectedAndGiven) {
  module->bindMethod("move", [](const std::string&, float, const QVValue&) {});
  module->bindMethod("poses", [](const std::vector<std::vector<float>>&, ko::Duration) {});
  module->bindMethod("name", [] { return std::string("none"); });
  const QVProxy caller = proxy();
  const std::pair<std::string, std::string> cases[] = {
      {errorOf([&] { caller.callVoid("move", "a", 1.0f); }),
       "Test::move: arguments (string, float, any) expected, (string, float) given"},
      {errorOf([&] { caller.callVoid("move", 1, "x", QVValue()); }),
       "Test::move: arguments (string, float, any) expected, (int, string, invalid) given"},
      {errorOf([&] { caller.callVoid("poses", std::vector<float>{1}, ko::Duration(1)); }),
       "Test::poses: arguments (array of array of float, int) expected, (array, int) given"},
      {errorOf([&] { caller.callVoid("name", 1); }),
       "Test::name: arguments () expected, (int) given"},
      {errorOf([&] { caller.call<std::vector<int>>("name"); }),
       "Test::name: result array of int expected, string given"},
      {errorOf([&] { caller.callVoid("walk"); }), "Test::walk: no such method"},
  };
  for (const auto& [actual, expected] : cases) EXPECT_EQ(actual, expected);
}

TEST_F(QVBrokerTest, anExceptionOfAMethodArrivesAsAQVError) {
  module->bindMethod("standard", [] { throw std::runtime_error("broke"); });
  module->bindMethod("own", [] { throw QVError("Deeper", "dig", "rock"); });
  module->bindMethod("foreign", [] { throw 42; });
  const QVProxy caller = proxy();
  try {
    caller.callVoid("standard");
    ADD_FAILURE();
  } catch (const QVError& error) {
    EXPECT_EQ(error.getModule(), "Test");
    EXPECT_EQ(error.getMethod(), "standard");
    EXPECT_EQ(error.getMessage(), "broke");
    EXPECT_STREQ(error.what(), "Test::standard: broke");
  }
  EXPECT_EQ(errorOf([&] { caller.callVoid("own"); }), "Deeper::dig: rock");
  EXPECT_THROW(caller.callVoid("foreign"), int);
}

TEST_F(QVBrokerTest, methodsAreBoundOnceAndBeforeTheModuleIsRegistered) {
  module->bindMethod("run", [] {});
  EXPECT_EQ(errorOf([&] { module->bindMethod("run", [] {}); }),
            "Test::bindMethod: run is bound already");
  sut->registerModule(module);
  EXPECT_EQ(errorOf([&] { module->bindMethod("late", [] {}); }),
            "Test::bindMethod: late: the module is registered already");
}

TEST_F(QVBrokerTest, modulesComeAndGoAtRunTime) {
  EXPECT_FALSE(sut->isModulePresent("Test"));
  sut->registerModule(module);
  EXPECT_TRUE(sut->isModulePresent("Test"));
  EXPECT_EQ(errorOf([&] { sut->registerModule(makeModule("Test")); }),
            "QVBroker::registerModule: module \"Test\" is registered already");
  sut->unregisterModule("Test");
  EXPECT_FALSE(sut->isModulePresent("Test"));
  EXPECT_EQ(errorOf([&] { sut->unregisterModule("Test"); }),
            "QVBroker::unregisterModule: no module \"Test\"");
  EXPECT_EQ(errorOf([&] { sut->registerModule(nullptr); }),
            "QVBroker::registerModule: no module given");
}

TEST_F(QVBrokerTest, theEndOfAScopedModuleRemovesItAloneAndNoOtherOfItsName) {
  { const ScopedModule scope(sut, module); }
  EXPECT_FALSE(sut->isModulePresent("Test"));
  {
    const auto kept = makeModule("Test");
    const ScopedModule scope(sut, kept);
    sut->unregisterModule("Test");
    sut->registerModule(makeModule("Test"));
  }
  EXPECT_TRUE(sut->isModulePresent("Test"));
}

TEST_F(QVBrokerTest, aProxyNeedsItsModuleAndABroker) {
  const std::string missing = "QVProxy::QVProxy: no module \"Test\"";
  EXPECT_EQ(errorOf([&] { sut->getProxy("Test", 0); }), missing);
  EXPECT_EQ(errorOf([&] { sut->getSpecialisedProxy<QVMemoryProxy>("Test"); }), missing);
  EXPECT_EQ(errorOf([&] { QVProxy(sut, "Test"); }), missing);
  EXPECT_EQ(errorOf([&] { QVMotionProxy{sut}; }), "QVProxy::QVProxy: no module \"QVMotion\"");
  EXPECT_EQ(errorOf([&] { DCMProxy{nullptr}; }),
            "QVProxy::QVProxy: no broker given for module \"DCM\"");
}

TEST_F(QVBrokerTest, aProxyOutlivesModuleAndBrokerAndFindsTheModuleAgain) {
  module->bindMethod("get", [] { return 1; });
  const QVProxy caller = proxy();
  sut->unregisterModule("Test");
  EXPECT_EQ(errorOf([&] { caller.callVoid("get"); }), "Test::get: no such module");
  auto second = makeModule("Test");
  second->bindMethod("get", [] { return 2; });
  sut->registerModule(second);
  EXPECT_EQ(caller.call<int>("get"), 2);
  sut.reset();
  EXPECT_EQ(errorOf([&] { caller.callVoid("get"); }), "Test::get: the broker is gone");
}

TEST_F(QVBrokerTest, aModuleMayHoldProxiesToItselfWithoutKeepingItselfAlive) {
  const boost::weak_ptr<QVModule> watched = module;
  auto held = boost::make_shared<boost::shared_ptr<QVProxy>>();
  module->bindMethod("outer", [held] { return (*held)->call<int>("inner"); });
  module->bindMethod("inner", [] { return 7; });
  sut->registerModule(module);
  *held = sut->getProxy("Test", 0);
  EXPECT_EQ((*held)->call<int>("outer"), 7);
  held.reset();
  module.reset();
  sut.reset();
  EXPECT_TRUE(watched.expired());
}

TEST_F(QVBrokerTest, aModuleThatIsUnregisteredDuringACallFinishesIt) {
  std::latch entered(1);
  std::latch removed(1);
  module->bindMethod("work", [&] {
    entered.count_down();
    removed.wait();
    return 3;
  });
  const QVProxy caller = proxy();
  module.reset();
  int result = 0;
  std::thread thread([&] { result = caller.call<int>("work"); });
  entered.wait();
  sut->unregisterModule("Test");
  removed.count_down();
  thread.join();
  EXPECT_EQ(result, 3);
}

TEST_F(QVBrokerTest, callsRunOnAllThreadsWhileModulesComeAndGo) {
  std::atomic<int> ran{0};
  module->bindMethod("run", [&ran] { ++ran; });
  const QVProxy caller = proxy();
  std::atomic<int> answered{0};
  std::atomic<int> refused{0};
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int n = 0; n < 1000; ++n) {
        const std::string error = errorOf([&] { caller.callVoid("run"); });
        if (error.empty()) ++answered;
        if (error == "Test::run: no such module") ++refused;
      }
    });
  }
  for (int n = 0; n < 200; ++n) {
    sut->unregisterModule("Test");
    sut->registerModule(module);
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(answered, ran);
  EXPECT_EQ(answered + refused, 4000);
}

TEST(QVBrokerManager, getAnyReturnsALivingBroker) {
  auto* manager = QVBrokerManager::getInstance();
  const auto ask = [manager] { manager->getRandomBroker(); };
  const std::string none = "QVBrokerManager::getRandomBroker: no broker is registered";
  EXPECT_EQ(errorOf(ask), none);
  const auto unknown = boost::make_shared<QVBroker>();
  EXPECT_EQ(errorOf(ask), none);
  auto first = QVBroker::create();
  auto second = QVBroker::create();
  EXPECT_EQ(manager->getRandomBroker(), first);
  first.reset();
  EXPECT_EQ(manager->getRandomBroker(), second);
  second.reset();
  EXPECT_EQ(errorOf(ask), none);
}

}  // namespace
}  // namespace QV
