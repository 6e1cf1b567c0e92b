#include "platform/ko/internal/event_loop.h"

#include <atomic>
#include <thread>

#include "platform/ko/clock.h"
#include "tests/platform/ko/pool_hold.h"
#include "tests/platform/ko/timeline.h"
#include "tests/support/log_capture.h"
#include "tests/support/vocabulary.h"

namespace ko {
namespace {

using boost::chrono::microseconds;

TEST(EventLoop, delaysFireWhateverTheOrderInWhichTheyAreAskedFor) {
  auto never = getEventLoop().asyncDelay([] {}, Duration::max());
  auto late = getEventLoop().asyncDelay([] {}, hours(1));
  auto second = getEventLoop().asyncDelay([] {}, milliseconds(3));
  auto first = getEventLoop().asyncDelay([] {}, milliseconds(1));
  auto atOnce = getEventLoop().asyncDelay([] {}, milliseconds(-1));
  for (auto* future : {&second, &first, &atOnce}) {
    future->wait();
    EXPECT_TRUE(future->isFinished());
  }
  for (auto* future : {&never, &late}) {
    EXPECT_FALSE(future->isFinished());
    future->cancel();
  }
}

TEST(EventLoop, aDelayIsAtLeastAsLongAsAsked) {
  const auto start = Clock::now();
  Clock::time_point called;
  getEventLoop().asyncDelay([&] { called = Clock::now(); }, milliseconds(2)).wait();
  EXPECT_GE(called - start, milliseconds(2));
  os::msleep(2);
  EXPECT_GE(Clock::now() - called, milliseconds(2));
}

TEST(EventLoop, refusesAnEmptyFunction) {
  const auto kRefused =
      ThrowsMessage<std::invalid_argument>("EventLoop: there is no function to call");
  EXPECT_THAT([] { getEventLoop().post({}); }, kRefused);
  EXPECT_THAT([] { getEventLoop().asyncDelay({}, milliseconds(1)); }, kRefused);
}

TEST(Future, copiesReferToTheSameCallAndDestroyingThemDoesNotCancel) {
  Timeline timeline;
  getEventLoop().asyncDelay(timeline.noting("let go"), milliseconds(1));
  auto sut = getEventLoop().asyncDelay(timeline.noting("cancelled"), milliseconds(2));
  auto copy = sut;
  copy.cancel();
  timeline.advanceMs(5);
  EXPECT_THAT(timeline.lines, ElementsAre("let go 1"));
  EXPECT_TRUE(sut.isCanceled());
  EXPECT_FALSE(sut.isFinished());
  sut.wait();
}

TEST(Future, cancellingReleasesWhatTheCallCaptured) {
  auto token = std::make_shared<int>();
  auto sut = getEventLoop().asyncDelay([token] {}, hours(1));
  ASSERT_EQ(token.use_count(), 2);
  sut.cancel();
  EXPECT_EQ(token.use_count(), 1);
}

TEST(Future, capturesAreReleasedBeforeTheCallCountsAsFinished) {
  SimulatedTime time;
  Future<void> sut;
  bool finishedFirst = true;
  std::shared_ptr<int> token(new int, [&](int* value) {
    finishedFirst = sut.isFinished();
    delete value;
  });
  sut = getEventLoop().asyncDelay([token = std::move(token)] {}, milliseconds(1));
  sut.wait();
  EXPECT_FALSE(finishedFirst);
}

TEST(Future, aCallThatIsQueuedAlreadyDoesNotStartAfterItsCancelling) {
  bool ran = false;
  test::PoolHold hold(test::kPoolThreads);
  auto sut = getEventLoop().asyncDelay([&] { ran = true; }, Duration::zero());
  sut.cancel();
  hold.release();
  test::flushPool();
  EXPECT_TRUE(sut.isCanceled());
  EXPECT_FALSE(ran);
}

TEST(Future, cancellingARunningCallNeitherBlocksNorUndoesIt) {
  std::latch entered(1), released(1);
  auto sut = getEventLoop().asyncDelay(
      [&] {
        entered.count_down();
        released.wait();
      },
      Duration::zero());
  entered.wait();
  sut.cancel();
  EXPECT_FALSE(sut.isCanceled());
  EXPECT_FALSE(sut.isFinished());
  released.count_down();
  sut.wait();
  EXPECT_TRUE(sut.isFinished());
}

TEST(Future, everyCallEitherRunsOnceOrIsCancelled) {
  constexpr int kCalls = 5000;
  std::vector<std::atomic<int>> runs(kCalls);
  std::vector<Future<void>> futures;
  for (int i = 0; i < kCalls; ++i) {
    futures.push_back(getEventLoop().asyncDelay([&, i] { ++runs[i]; }, microseconds(i % 3)));
    if (i >= 2) futures[i - 2].cancel();
  }
  test::flushPool();
  for (int i = 0; i < kCalls; ++i) {
    futures[i].wait();
    EXPECT_NE(futures[i].isFinished(), futures[i].isCanceled()) << i;
    EXPECT_EQ(runs[i], futures[i].isFinished() ? 1 : 0) << i;
  }
}

TEST(Future, anotherThreadThatWaitsLeavesTheCallToTheOwner) {
  Timeline timeline;
  std::thread::id runner;
  std::latch begun(1);
  std::thread waiter([&] {
    auto sut =
        getEventLoop().asyncDelay([&] { runner = std::this_thread::get_id(); }, milliseconds(1));
    begun.count_down();
    sut.wait();
  });
  begun.wait();
  for (int i = 0; i < 100; ++i) std::this_thread::yield();
  timeline.advanceMs(1);
  waiter.join();
  EXPECT_EQ(runner, std::this_thread::get_id());
}

TEST(Future, aCallCantWaitForItself) {
  for (const bool simulated : {true, false}) {
    std::optional<SimulatedTime> time;
    if (simulated) time.emplace();
    test::PoolHold hold(simulated ? 0 : test::kPoolThreads);
    Future<void> sut;
    std::string refusal;
    sut = getEventLoop().asyncDelay([&] { refusal = QV::errorOf([&] { sut.wait(); }); },
                                    Duration::zero());
    hold.release();
    sut.wait();
    EXPECT_EQ(refusal, "Future: the call to wait for is running on this thread");
  }
}

}  // namespace
}  // namespace ko
