#include "platform/ko/simulated_time.h"

#include <atomic>
#include <latch>
#include <thread>

#include "platform/ko/clock.h"
#include "platform/ko/internal/event_loop.h"
#include "platform/ko/internal/strand.h"
#include "platform/ko/periodic_task.h"
#include "tests/platform/ko/pool_hold.h"
#include "tests/platform/ko/timeline.h"

namespace ko {
namespace {

Clock::time_point timeAtMs(std::int64_t ms) {
  return Clock::time_point(milliseconds(ms));
}

void startTask(PeriodicTask& task, int periodMs, boost::function<void()> callback) {
  task.setCallback(std::move(callback));
  task.setPeriod(milliseconds(periodMs));
  task.start(false);
}

TEST(SimulatedTime, refusesToGoBackAndToBeAdvancedByOthers) {
  Timeline sut;
  sut.advanceMs(10);
  const auto kBackwards = ThrowsMessage<std::invalid_argument>(
      "SimulatedTime: time can't be advanced by a negative duration");
  EXPECT_THAT([&] { sut.advanceMs(-1); }, kBackwards);
  EXPECT_THAT([&] { sut.time.runUntil([] { return false; }, milliseconds(-1)); }, kBackwards);
  EXPECT_THAT([&] { sut.time.advanceTo(timeAtMs(9)); },
              ThrowsMessage<std::invalid_argument>("SimulatedTime: time can't be moved back"));
  EXPECT_THAT([] { SimulatedTime second; },
              ThrowsMessage<std::logic_error>("SimulatedTime: the clock is already taken over"));
  std::thread([&] {
    EXPECT_THAT([&] { sut.time.runDue(); },
                ThrowsMessage<std::logic_error>(
                    "SimulatedTime: only the thread that took the clock over may advance it"));
  }).join();
  EXPECT_EQ(Clock::now(), timeAtMs(10));
}

TEST(SimulatedTime, advancesToTheEndOfTimeAndNoFurther) {
  SimulatedTime sut(timeAtMs(1));
  getEventLoop().asyncDelay([] {}, Duration::max());
  sut.advance(Duration::max());
  EXPECT_EQ(Clock::now(), Clock::time_point::max());
}

TEST(SimulatedTime, sleepsOfOtherThreadsWaitForTheOwner) {
  Timeline sut;
  std::vector<Clock::time_point> awoke;
  std::thread sleeper([&] {
    for (int i = 0; i < 50; ++i) {
      os::msleep(20);
      awoke.push_back(Clock::now());
    }
  });
  for (int i = 0; i < 50; ++i) {
    sut.time.awaitSleepers(1);
    sut.advanceMs(15);
    sut.time.awaitSleepers(1);
    sut.advanceMs(5);
  }
  sleeper.join();
  for (int i = 0; i < 50; ++i) EXPECT_EQ(awoke[i], timeAtMs(20 * (i + 1)));
}

TEST(SimulatedTime, pendingCallsAreReleasedAndNeverRunAfterTheScope) {
  const auto token = std::make_shared<int>(0);
  const auto touch = [token] { ++*token; };
  PeriodicTask task;
  Strand strand;
  Future<void> future;
  std::thread sleeper;
  {
    SimulatedTime time;
    startTask(task, 1, touch);
    future = getEventLoop().asyncDelay(touch, milliseconds(1));
    getEventLoop().post(touch);
    strand.post(touch);
    sleeper = std::thread([] { os::msleep(1); });
    time.awaitSleepers(1);
  }
  sleeper.join();
  test::flushPool();
  EXPECT_TRUE(future.isCanceled());
  EXPECT_FALSE(task.isRunning());
  EXPECT_EQ(*token, 0);
  task.setCallback([] {});
  EXPECT_EQ(token.use_count(), 2) << "here and in touch";

  std::latch ranAgain(1);
  startTask(task, 3'600'000, [&] { ranAgain.count_down(); });
  task.start(true);
  ranAgain.wait();
  task.stop();
}

TEST(SimulatedTime, tasksStartedBeforeKeepTheMachinesClock) {
  std::thread::id runner;
  auto future =
      getEventLoop().asyncDelay([&] { runner = std::this_thread::get_id(); }, milliseconds(5));
  Timeline sut;
  sut.advanceMs(1000);
  future.wait();
  EXPECT_NE(runner, std::this_thread::get_id());
  EXPECT_EQ(Clock::now(), timeAtMs(1000));
}

TEST(SimulatedTime, mayEndInsideAnyCallThatAnyOperationRuns) {
  using Start = void (*)(boost::function<void()>, PeriodicTask&);
  const Start starts[] = {
      [](boost::function<void()> end, PeriodicTask& task) { startTask(task, 1, std::move(end)); },
      [](boost::function<void()> end, PeriodicTask&) { getEventLoop().post(std::move(end)); },
      [](boost::function<void()> end, PeriodicTask&) {
        getEventLoop().asyncDelay(std::move(end), milliseconds(1));
      }};
  const boost::function<void(SimulatedTime&)> operations[] = {
      [](SimulatedTime& time) { time.advance(milliseconds(10)); },
      [](SimulatedTime& time) { time.advanceTo(timeAtMs(10)); },
      [](SimulatedTime& time) { time.runUntil([] { return false; }, milliseconds(10)); },
      [](SimulatedTime&) { os::msleep(10); },
      [](SimulatedTime&) { getEventLoop().asyncDelay([] {}, milliseconds(10)).wait(); }};
  for (const auto& operation : operations) {
    for (const Start start : starts) {
      auto sut = std::make_unique<SimulatedTime>();
      bool ranLater = false;
      PeriodicTask task;
      start([&] { sut.reset(); }, task);
      getEventLoop().asyncDelay([&] { ranLater = true; }, milliseconds(2));
      operation(*sut);
      EXPECT_EQ(sut, nullptr);
      EXPECT_FALSE(ranLater);
      EXPECT_FALSE(task.isRunning());
      EXPECT_FALSE(Clock::now() == timeAtMs(10));
    }
  }
}

// All were started before the simulated time, so they run on the pool, where they sleep in it.
TEST(SimulatedTime, goesOnWhileItsOwnerWaitsForAnotherThreadThatSleepsInIt) {
  std::latch simulated(1);
  std::atomic<int> woken{0};
  const auto sleep = [&] {
    simulated.wait();
    os::msleep(20);
    ++woken;
  };
  PeriodicTask task;
  task.setPeriod(hours(1));
  task.setCallback(sleep);
  Strand strand;
  {
    test::PoolHold hold(test::kPoolThreads);
    task.start(true);
    strand.post(sleep);
  }
  auto future = getEventLoop().asyncDelay(sleep, Duration::zero());
  Timeline sut;
  simulated.count_down();
  sut.time.awaitSleepers(3);
  PeriodicTask other;
  startTask(other, 15, sut.noting("other"));
  task.stop();
  strand.stop();
  future.wait();
  EXPECT_EQ(woken, 3);
  EXPECT_THAT(sut.lines, ElementsAre("other 15"));
  EXPECT_EQ(Clock::now(), timeAtMs(20));
}

}  // namespace
}  // namespace ko
