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

TEST(PeriodicTask, startsItsRunsByPeriodAndCallbackTime) {
  struct Case {
    const char* what;
    bool immediate;
    bool compensate;
    std::vector<int> callbackMs;  // of each run in turn, then 0
    std::vector<std::string> expected;
  };
  const Case cases[] = {
      {"at once, then period by period", true, false, {}, {"0", "10", "20", "30"}},
      {"after one period", false, false, {}, {"10", "20", "30", "40"}},
      {"the callback's time comes on top", true, false, {4, 4, 4}, {"0", "14", "28", "42"}},
      {"or is taken off", true, true, {4, 4, 4}, {"0", "10", "20", "30"}},
      {"down to no wait at all", true, true, {10, 0, 25, 25}, {"0", "10", "20", "45"}},
      {"missed runs are not made up", true, true, {35}, {"0", "35", "45", "55"}},
  };
  for (const Case& c : cases) {
    Timeline timeline;
    std::vector<std::string> starts;
    PeriodicTask sut;
    sut.setUsPeriod(10'000);
    sut.compensateCallbackTime(c.compensate);
    sut.setCallback([&] {
      const std::size_t run = timeline.lines.size();
      timeline.note("");
      if (run < c.callbackMs.size()) os::msleep(c.callbackMs[run]);
    });
    sut.start(c.immediate);
    timeline.time.runUntil([&] { return timeline.lines.size() == 4; }, hours(1));
    for (const auto& line : timeline.lines) starts.push_back(line.substr(1));
    EXPECT_EQ(starts, c.expected) << c.what;
  }
}

TEST_F(PeriodicTaskTest, stopsAndStartsAnewWhetherItRunsOrNot) {
  sut.setCallback(timeline.noting("run"));
  EXPECT_FALSE(sut.isRunning());
  sut.start(true);
  EXPECT_TRUE(sut.isRunning());
  timeline.advanceMs(15);
  sut.stop();
  EXPECT_FALSE(sut.isRunning());
  timeline.advanceMs(100);
  sut.stop();
  sut.start(false);
  timeline.advanceMs(5);
  sut.start(false);
  timeline.advanceMs(20);
  EXPECT_THAT(timeline.lines, ElementsAre("run 0", "run 10", "run 130", "run 140"));
}

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

TEST_F(PeriodicTaskTest, anExceptionIsLoggedAndTheTaskGoesOn) {
  QV::test::LogCapture capture;
  sut.setCallback([this] {
    timeline.note("run");
    if (timeline.lines.size() == 1) throw std::runtime_error("bad reading");
    if (timeline.lines.size() == 2) throw 7;
  });
  sut.start(true);
  timeline.advanceMs(20);
  EXPECT_THAT(timeline.lines, ElementsAre("run 0", "run 10", "run 20"));
  EXPECT_THAT(capture.lines(), ElementsAre("error ko.PeriodicTask.run: Test: bad reading",
                                           "error ko.PeriodicTask.run: Test: unknown exception"));
}

TEST_F(PeriodicTaskTest, theCallbackMayStopChangeAndRestartItsTaskButIsNotEnteredTwice) {
  sut.setCallback([this] {
    timeline.note("begin");
    sut.stop();
    sut.setPeriod(milliseconds(20));
    sut.setCallback(timeline.noting("changed"));
    sut.start(true);
    os::msleep(50);
    timeline.note("end");
  });
  sut.start(true);
  timeline.advanceMs(75);
  EXPECT_THAT(timeline.lines, ElementsAre("begin 0", "end 50", "changed 50", "changed 70"));
}

TEST_F(PeriodicTaskTest, restartsInTheCallbackLeaveOneTaskNotTwo) {
  sut.setCallback([this] {
    timeline.note("run");
    if (timeline.lines.size() == 1) {
      sut.start(true);
      os::msleep(1);
      sut.start(false);
    }
    os::msleep(3);
  });
  sut.start(true);
  timeline.advanceMs(40);
  EXPECT_THAT(timeline.lines, ElementsAre("run 0", "run 11", "run 24", "run 37"));
}

TEST_F(PeriodicTaskTest, startThenStopInTheCallbackLeavesItStopped) {
  sut.setCallback([this] {
    timeline.note("run");
    sut.start(true);
    os::msleep(30);
    sut.stop();
  });
  sut.start(true);
  timeline.advanceMs(100);
  EXPECT_THAT(timeline.lines, ElementsAre("run 0"));
  EXPECT_FALSE(sut.isRunning());
}

TEST_F(PeriodicTaskTest, aCallThatRunsInsideTheCallbacksSleepMayStopTheTask) {
  sut.setCallback([this] {
    os::msleep(5);
    timeline.note("end");
  });
  sut.start(true);
  getEventLoop().asyncDelay([this] { sut.stop(); }, milliseconds(3));
  timeline.advanceMs(100);
  EXPECT_THAT(timeline.lines, ElementsAre("end 5"));
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
