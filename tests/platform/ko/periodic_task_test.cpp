#include "platform/ko/periodic_task.h"

#include <atomic>
#include <limits>
#include <memory>
#include <optional>
#include <thread>

#include "platform/ko/clock.h"
#include "tests/platform/ko/pool_hold.h"
#include "tests/platform/ko/timeline.h"
#include "tests/support/log_capture.h"

namespace ko {
namespace {

struct PeriodicTaskTest : testing::Test {
  PeriodicTaskTest() {
    sut.setName("Test");
    sut.setUsPeriod(10'000);
  }

  Timeline timeline;
  PeriodicTask sut;
};

TEST(PeriodicTask, theDestructorReleasesTheCallback) {
  for (const bool simulated : {true, false}) {
    std::optional<SimulatedTime> time;
    if (simulated) time.emplace();
    const auto token = std::make_shared<int>();
    auto sut = std::make_unique<PeriodicTask>();
    sut->setCallback([token] {});
    sut->setPeriod(hours(1));
    sut->start(false);
    sut->start(false);
    sut.reset();
    EXPECT_EQ(token.use_count(), 1) << "simulated: " << simulated;
  }
}

TEST(PeriodicTaskDeath, aTaskThatIsDestroyedInsideItsCallbacksSleepEndsTheProgramByName) {
  const auto destroyAsleep = [] {
    Timeline timeline;
    auto sut = std::make_unique<PeriodicTask>();
    sut->setName("Test");
    sut->setPeriod(milliseconds(10));
    sut->setCallback([] { os::msleep(5); });
    sut->start(true);
    getEventLoop().asyncDelay([&] { sut.reset(); }, milliseconds(3));
    timeline.advanceMs(10);
  };
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(destroyAsleep(), "Test: destroyed by a call that runs inside a sleep of the task's");
}

TEST_F(PeriodicTaskTest, refusesToStartWithoutCallbackOrPeriod) {
  EXPECT_THAT([&] { sut.start(true); },
              ThrowsMessage<std::logic_error>("PeriodicTask Test: there is no callback to start"));
  sut.setCallback([] {});
  for (const int period : {0, -3}) {
    sut.setUsPeriod(period);
    EXPECT_THAT([&] { sut.start(true); },
                ThrowsMessage<std::invalid_argument>("PeriodicTask Test: the period must be "
                                                     "positive, not " +
                                                     std::to_string(1000 * period) + " ns"));
  }
  EXPECT_FALSE(sut.isRunning());
}

TEST_F(PeriodicTaskTest, refusesOtherSettingsWhileItRuns) {
  sut.setCallback(timeline.noting("run"));
  sut.start(false);
  const auto kRefused =
      ThrowsMessage<std::logic_error>("PeriodicTask Test: settings can't be changed while it runs");
  EXPECT_THAT([&] { sut.setName("Other"); }, kRefused);
  EXPECT_THAT([&] { sut.setCallback({}); }, kRefused);
  EXPECT_THAT([&] { sut.setUsPeriod(1); }, kRefused);
  EXPECT_THAT([&] { sut.compensateCallbackTime(true); }, kRefused);
  timeline.advanceMs(10);
  EXPECT_THAT(timeline.lines, ElementsAre("run 10"));
}

TEST_F(PeriodicTaskTest, aPeriodBeyondTheClocksRangeNeverFires) {
  sut.setCallback(timeline.noting("run"));
  sut.setUsPeriod(std::numeric_limits<std::int64_t>::max());
  sut.compensateCallbackTime(true);
  sut.start(true);
  timeline.time.advance(hours(1000));
  EXPECT_THAT(timeline.lines, ElementsAre("run 0"));
}

TEST(PeriodicTaskOnThePool, stopWaitsForARunningCallback) {
  std::latch entered(1), released(1);
  std::atomic<bool> finished{false};
  PeriodicTask sut;
  sut.setPeriod(hours(1));
  sut.setCallback([&] {
    entered.count_down();
    released.wait();
    finished = true;
  });
  sut.start(true);
  entered.wait();
  std::thread stopper([&] {
    sut.stop();
    EXPECT_TRUE(finished);
  });
  while (sut.isRunning()) std::this_thread::yield();
  released.count_down();
  stopper.join();
}

TEST(PeriodicTaskOnThePool, stopNeitherWaitsForARunThatHasNotBegunNorLetsItBegin) {
  std::atomic<int> runs{0};
  PeriodicTask sut;
  sut.setPeriod(hours(1));
  sut.setCallback([&] { ++runs; });
  for (const bool startAgain : {false, true}) {
    test::PoolHold hold(test::kPoolThreads);
    sut.start(true);
    sut.stop();
    if (startAgain) sut.start(true);
    hold.release();
    test::flushPool();
    EXPECT_EQ(runs, startAgain ? 1 : 0);
  }
}

TEST(PeriodicTaskOnThePool, theCallbackMayStopAndDestroyItsTask) {
  std::latch destroyed(1);
  auto sut = std::make_unique<PeriodicTask>();
  std::string kept = "what the callback holds outlives the task until it returns";
  sut->setPeriod(milliseconds(1));
  {
    test::PoolHold hold(test::kPoolThreads);
    sut->setCallback([&sut, &destroyed, kept] {
      sut->stop();
      sut.reset();
      EXPECT_EQ(kept.substr(0, 4), "what");
      destroyed.count_down();
    });
    sut->start(true);
  }
  destroyed.wait();
  EXPECT_EQ(sut, nullptr);
  test::flushPool();
}

TEST(PeriodicTaskOnThePool, whatTheCallbackHeldIsGoneAfterTheDestructorAndAfterStopAndAnotherOne) {
  const auto token = std::make_shared<int>();
  int late = 0;
  for (int i = 0; i < 300; ++i) {
    std::latch entered(1);
    auto sut = std::make_unique<PeriodicTask>();
    sut->setPeriod(hours(1));
    sut->setCallback([token, &entered, task = sut.get()] {
      entered.count_down();
      while (task->isRunning()) std::this_thread::yield();
    });
    sut->start(true);
    entered.wait();
    if (i % 2 == 0) {
      sut.reset();
    } else {
      sut->stop();
      sut->setCallback([] {});
    }
    if (token.use_count() != 1) ++late;
  }
  EXPECT_EQ(late, 0);
}

TEST(PeriodicTaskOnThePool, runsInRealTimeAgainAndAgain) {
  std::latch thirdRun(3);
  const auto start = Clock::now();
  PeriodicTask sut;
  sut.setPeriod(milliseconds(2));
  sut.setCallback([&, count = 0]() mutable {
    if (++count <= 3) thirdRun.count_down();
  });
  sut.start(false);
  thirdRun.wait();
  EXPECT_GE(Clock::now() - start, milliseconds(6));
}

TEST(PeriodicTaskOnThePool, startedAndStoppedFromTwoThreadsItNeverRunsTwiceAtOnce) {
  constexpr int kRounds = 50'000;
  std::atomic<int> inside{0};
  std::atomic<int> overlaps{0};
  std::atomic<int> runs{0};
  PeriodicTask sut;
  sut.setUsPeriod(1);
  sut.setCallback([&] {
    if (++inside != 1) ++overlaps;
    ++runs;
    --inside;
  });
  const auto startAndStop = [&] {
    for (int i = 0; i < kRounds; ++i) {
      sut.start(i % 2 == 0);
      if (i % 16 == 0) std::this_thread::yield();
      sut.stop();
    }
  };
  std::thread other(startAndStop);
  startAndStop();
  other.join();
  const int runsAtStop = runs;
  test::flushPool();
  EXPECT_EQ(overlaps, 0);
  EXPECT_EQ(runs, runsAtStop);
  EXPECT_FALSE(sut.isRunning());
  EXPECT_GT(runs, 0);
}

}  // namespace
}  // namespace ko
