#include "platform/ko/internal/strand.h"

#include <atomic>
#include <memory>
#include <thread>

#include "platform/ko/clock.h"
#include "tests/platform/ko/pool_hold.h"
#include "tests/platform/ko/timeline.h"
#include "tests/support/log_capture.h"

namespace ko {
namespace {

void flush(Strand& strand) {
  std::latch done(1);
  strand.post([&] { done.count_down(); });
  done.wait();
}

TEST(Strand, runsItsCallsOneByOneAndEachPostersInOrder) {
  constexpr int kCalls = 10000;
  Strand sut;
  // No lock: the strand is what keeps these apart.
  std::vector<int> seen[2];
  int inside = 0;
  const auto postAll = [&](int poster) {
    for (int i = 0; i < kCalls; ++i) {
      sut.post([&, poster, i] {
        EXPECT_EQ(++inside, 1);
        seen[poster].push_back(i);
        --inside;
      });
    }
  };
  std::thread other(postAll, 1);
  postAll(0);
  other.join();
  flush(sut);
  for (const auto& order : seen) {
    EXPECT_EQ(order.size(), static_cast<std::size_t>(kCalls));
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
  }
}

TEST(Strand, inSimulatedTimeEachCallKeepsItsPlaceAmongTheCallsOfOthers) {
  Timeline timeline;
  Strand sut;
  sut.post([&] {
    timeline.note("first");
    os::msleep(10);
    timeline.note("rested");
  });
  getEventLoop().post(timeline.noting("other"));
  sut.post(timeline.noting("second"));
  getEventLoop().post(timeline.noting("last"));
  timeline.time.runDue();
  EXPECT_THAT(timeline.lines,
              ElementsAre("first 0", "other 0", "last 0", "rested 10", "second 10"));
}

TEST(Strand, anExceptionIsLoggedAndTheNextCallFollows) {
  QV::test::LogCapture capture;
  Timeline timeline;
  Strand sut;
  sut.post([] { throw std::runtime_error("bad call"); });
  sut.post(timeline.noting("next"));
  timeline.time.runDue();
  EXPECT_THAT(timeline.lines, ElementsAre("next 0"));
  EXPECT_THAT(capture.lines(), ElementsAre("error ko.Strand.post: bad call"));
  EXPECT_THAT([&] { sut.post({}); },
              ThrowsMessage<std::invalid_argument>("Strand: there is no function to call"));
}

TEST(Strand, stoppingDropsWhatHasNotStartedAndWaitsForTheRunningCall) {
  Strand sut;
  std::latch entered(1), released(1);
  std::atomic<bool> finished{false};
  auto token = std::make_shared<int>();
  sut.post([&] {
    entered.count_down();
    released.wait();
    finished = true;
  });
  sut.post([token] { ++*token; });
  entered.wait();
  std::thread stopper([&] {
    sut.stop();
    EXPECT_TRUE(finished);
  });
  while (token.use_count() > 1) std::this_thread::yield();
  released.count_down();
  stopper.join();
  sut.post([token] { ++*token; });
  test::flushPool();
  EXPECT_EQ(*token, 0);
  EXPECT_EQ(token.use_count(), 1);
}

TEST(Strand, mayBeStoppedAndDestroyedByItsOwnCall) {
  auto sut = std::make_unique<Strand>();
  std::latch done(1);
  bool ranLater = false;
  {
    test::PoolHold hold(test::kPoolThreads);
    sut->post([&] {
      sut.reset();
      done.count_down();
    });
    sut->post([&] { ranLater = true; });
  }
  done.wait();
  test::flushPool();
  EXPECT_FALSE(ranLater);
}

TEST(Strand, whatACallCapturedMayPostWhenItGoes) {
  Strand sut;
  std::latch done(1);
  {
    test::PoolHold hold(test::kPoolThreads);
    const std::shared_ptr<void> poster(nullptr,
                                       [&](void*) { sut.post([&] { done.count_down(); }); });
    sut.post([poster] {});
    sut.post([] {});
  }
  done.wait();
}

TEST(Strand, aBusyStrandYieldsItsThreadNowAndThen) {
  test::PoolHold allButOne(test::kPoolThreads - 1);
  std::atomic<bool> otherRan{false};
  std::latch done(1);
  Strand sut;
  boost::function<void()> busy = [&] { otherRan ? done.count_down() : sut.post(busy); };
  sut.post(busy);
  getEventLoop().post([&] { otherRan = true; });
  done.wait();
}

}  // namespace
}  // namespace ko
